#include "simulation/steps/pressure_system.h"

#include <algorithm>
#include <cmath>

#include "math/mfield_operations.h"
#include "simulation/fluid/project.h"
#include "simulation/fluid_system.h"
#include "simulation/fluid_tools3d.h"
#include "util/cuda_use_flags.h"

namespace nbx {

void PressureSystem::begin_frame(FieldSource& /*fields*/) {
  frame_residual_ = 0;
  frame_confined_ = 0;
}

void PressureSystem::end_frame() { solids_.phi.reset(); }

void PressureSystem::store(SimFrame& frame, const std::set<int>& channels,
                           const GridMatrix& matrix) {
  if (!solids_.phi || !channels.contains(kSolid)) return;
  solids_.phi->move_to(kCpu);
  frame.add(solids_.phi->cpu_handle(), kGridSolid, domain_.origin(), matrix);
}

// Nothing pushes: no volume source and no moving solid.
bool PressureSystem::at_rest(MField* source) {
  const auto zero = [](MField* f) { return !f || f->empty() || m_infnorm(*f) == 0; };
  return zero(source) && zero(solids_.u.get()) && zero(solids_.v.get()) && zero(solids_.w.get());
}

bool PressureSystem::project(FluidSystem& fluid, MField* source, SolverProgress& progress) {
  if (fluid.zero_velocity() && at_rest(source)) {
    last_solve_ = {};
    return false;
  }

  try_gpu(no_kernel, [&] {
    const auto field = [](MField* f) { return f && !f->empty() ? &f->read_cpu() : nullptr; };
    const ProjectionFields fields{
        .U = &fluid.U().write_cpu(),
        .V = &fluid.V().write_cpu(),
        .W = &fluid.W().write_cpu(),
        .phi = field(solids_.phi.get()),
        .source = field(source),
        .Us = field(solids_.u.get()),
        .Vs = field(solids_.v.get()),
        .Ws = field(solids_.w.get()),
    };
    const ProjectionLimits limits{params_.pressure_tolerance, params_.max_cycles,
                                  params_.solid_iterations};
    last_solve_ = nbx::project(solver_, fields, domain_, limits, last_solve_.cycles, &progress);
  });
  frame_residual_ = std::max(frame_residual_, last_solve_.residual);
  frame_confined_ += last_solve_.confined * std::pow(domain_.dx, 3) * clock_.dt;
  solids_.u.reset();
  solids_.v.reset();
  solids_.w.reset();

  for (int axis = 0; axis < 3; ++axis) m_velocity_boundary(axis, fluid.component(axis), domain_);
  return true;
}

}  // namespace nbx
