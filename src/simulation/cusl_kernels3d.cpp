#include "simulation/cusl_kernels3d.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "math/mfield_operations.h"
#include "simulation/fluid/conservation.h"
#include "simulation/fluid/velocity_reach.h"
#include "util/cuda_use_flags.h"
#include "util/log.h"
#include "util/stopwatch.h"

namespace nbx {

void CuslKernels3D::begin_frame(FieldSource& fields) {
  FluidSystem::begin_frame(fields);
  times_ = {};
}

void CuslKernels3D::end_frame() {
  LogMessage() << "vel updt = " << times_.advection << ", " << times_.forces << ", "
               << times_.detail << ", " << times_.projection;
}

AdvectionParams CuslKernels3D::advection_params(Lookup lookup) {
  AdvectionParams params;
  params.velocity = tracer_velocity();
  params.dt = clock_.dt;
  params.dx = domain_.dx;
  params.tolerance = params_.trace_tolerance;
  params.cubic = params_.interp_points == 4;
  params.tracer = params_.adaptive_tracer ? Tracer::kAdaptive : Tracer::kRK2;
  params.lookup = lookup;
  params.domain = &domain_;
  return params;
}

void CuslKernels3D::prepare_advection() {
  channel_params_ = advection_params(Lookup::kCenter);
  if (!params_.keep_traces) return;
  for (int axis = 0; axis < 3; ++axis) {
    channel_params_.trace_back[axis] = &traces_[axis];
    channel_params_.trace_fwd[axis] = &traces_[3 + axis];
  }
}

void CuslKernels3D::after_channel_advection() {
  for (MField& trace : traces_) trace.release();
}

void CuslKernels3D::clear() {
  FluidSystem::clear();
  for (MField& trace : traces_) trace.release();
}

void CuslKernels3D::advect_field(MField& field, const Occupancy& held, bool conserve) {
  if (zero_velocity_) return;
  channel_params_.held = &held;
  (conserve ? advect_conserving : advect_scalar)(field, channel_params_);
}

void CuslKernels3D::advect_velocity() {
  if (zero_velocity_) return;
  const Stopwatch watch;
  const bool detailed = has_detail();
  std::array<MField, 3> moved;
  std::array<MField, 3> traces;  // of one component; each component is sampled at other places

  for (int axis = 0; axis < 3; ++axis) {
    AdvectionParams params = advection_params(static_cast<Lookup>(axis));
    if (params_.keep_traces)
      for (int i = 0; i < 3; ++i) params.trace_back[i] = &traces[i];
    moved[axis].resize(thread_location(), velocity_[axis].dims());
    advect(moved[axis], velocity_[axis], params);
    if (!detailed) continue;
    velocity_[axis].swap(moved[axis]);
    moved[axis].release();
  }
  // Without detail the plain velocity carries itself: it must not change before all three
  // components are done.
  if (!detailed)
    for (int axis = 0; axis < 3; ++axis) velocity_[axis].swap(moved[axis]);
  release_detail();
  times_.advection += watch.seconds();
}

void CuslKernels3D::update(double dt, PressureSystem& pressure, VelocityForce& forces,
                           SolverProgress& progress) {
  Stopwatch watch;
  if (!zero_velocity_ && params_.drag > 0) {
    const double left = std::pow(1 - params_.drag, dt / clock_.frame_duration);
    for (MField& component : velocity_) m_scal(component, left, component);
  }
  forces.add_forces(*this, dt);
  if (zero_velocity_)
    zero_velocity_ = std::all_of(velocity_.begin(), velocity_.end(), [](MField& component) {
      return component.empty() || m_infnorm(component) == 0;
    });
  if (!zero_velocity_ && params_.clamp_velocity) clamp_to_grid();
  times_.forces += watch.lap();

  MField divergence;
  const bool expands = forces.add_divergence(divergence, dt);
  zero_velocity_ = !pressure.project(*this, expands ? &divergence : nullptr, progress);
  times_.projection += watch.lap();

  if (params_.noise.amplitude > 0) build_detail(forces);
  times_.detail += watch.lap();
}

// Limits each component to the length of the grid per frame.
void CuslKernels3D::clamp_to_grid() {
  const double unit = domain_.dx / clock_.sim_time.length.value();
  for (int axis = 0; axis < 3; ++axis) {
    const float most = domain_.center_dims()[axis] * unit;
    m_clamp(component(axis), -most, most);
  }
}

void CuslKernels3D::build_detail(VelocityForce& forces) {
  for (int axis = 0; axis < 3; ++axis) {
    detail_[axis].resize(thread_location(), velocity_[axis].dims());
    if (zero_velocity_)
      detail_[axis].zero();
    else
      detail_[axis].assign(velocity_[axis]);
  }
  forces.add_detail(*this);
}

void CuslKernels3D::grow_box(double dt, IntBox& box) {
  const Vec3i origin = domain_.origin();
  const IntBox here = box_intersection(box, domain_.active_box);
  const std::array<MField*, 3> tracer = tracer_velocity();
  if (here.empty() || tracer[0]->empty()) return;
  IntBox reached;
  try_gpu(no_kernel, [&] {
    advection_buffer(reached, dt / domain_.dx, tracer[0]->read_cpu(), tracer[1]->read_cpu(),
                     tracer[2]->read_cpu(), {here.lo - origin, here.hi - origin});
  });
  box = box_union(box, domain_.in_domain(reached));
}

double CuslKernels3D::max_step() {
  const std::array<MField*, 3> tracer = tracer_velocity();
  double speed = 0;
  if (!tracer[0]->empty())
    try_gpu(no_kernel, [&] {
      speed = max_velocity(tracer[0]->read_cpu(), tracer[1]->read_cpu(), tracer[2]->read_cpu());
    });
  if (speed == 0) speed = std::numeric_limits<double>::epsilon();
  return params_.cfl * domain_.dx / speed;
}

}  // namespace nbx
