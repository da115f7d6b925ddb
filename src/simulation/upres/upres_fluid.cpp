#include "simulation/upres/upres_fluid.h"

#include <algorithm>

#include "math/field_resampling.h"
#include "math/mfield_operations.h"
#include "simulation/fluid_tools3d.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr int kTextureTypes[3] = {kGridCoordinateX, kGridCoordinateY, kGridCoordinateZ};

}  // namespace

std::optional<IntBox> UpresFluid::open_source(const std::shared_ptr<BFS>& source) {
  low_ = open_low_frame(source, clock_.frame);
  if (low_) return refined(low_.box, params_.upres_factor);
  LogMessage() << "Missing velocity cache in upres mode";
  return {};
}

// The first frame of a run has no substep: nothing moves yet.
void UpresFluid::begin_step() {
  if (clock_.step_index == 0 && clock_.dt > 0) begin_update();
  low_ = {};
}

void UpresFluid::begin_update() {
  if (!low_) return;
  tex_.cover(low_.box);
  if (low_.box.empty()) return;
  carry_texture(low_);
  scale_up(low_);
  if (params_.upres_noise_amount > 0)
    detail_maker_.add(velocity_, low_, tex_, params_, low_dx(), frame_length());
  zero_velocity_ = false;
  apply_boundary();
}

// Over the whole frame, since only its first substep comes here.
void UpresFluid::carry_texture(const LowFrame& low) {
  std::array<MField, 3> velocity;
  AdvectionParams params = advection_params(Lookup::kCenter);
  for (int axis = 0; axis < 3; ++axis) {
    velocity[axis].assign(*low.velocity[axis]);
    params.velocity[axis] = &velocity[axis];
  }
  params.dt = frame_length();
  params.dx = low_dx();
  params.domain = nullptr;
  tex_.advect(params);
  tex_.regen_distorted();
}

void UpresFluid::scale_up(const LowFrame& low) {
  const int f = params_.upres_factor;
  const auto& [u, v, w] = low.velocity;
  scale_up_west(U().write_cpu(), *u, f);
  scale_up_south(V().write_cpu(), *v, f);
  scale_up_low(W().write_cpu(), *w, f);
}

void UpresFluid::resize(const Vec3i& /*delta*/) {
  release_detail();
  for (int axis = 0; axis < 3; ++axis) {
    velocity_[axis].resize(kCpu, domain_.face_dims(axis));
    velocity_[axis].zero();
  }
}

void UpresFluid::clear() {
  CuslKernels3D::clear();
  tex_.clear();
  low_ = {};
}

// The grids get the origin of the fine ones, so that the frame's box stays that of the gas. Their
// own follows from that box.
void UpresFluid::store(SimFrame& frame, const std::set<int>& channels, const GridMatrix& matrix) {
  CuslKernels3D::store(frame, channels, matrix);
  if (!channels.contains(kTexture) || tex_.empty()) return;
  for (int axis = 0; axis < 3; ++axis)
    frame.add(tex_.all()[axis]->cpu_handle(), kTextureTypes[axis], domain_.origin(), matrix);
}

void UpresFluid::load(SimFrame& frame) {
  CuslKernels3D::load(frame);
  tex_.clear();
  const int f = params_.upres_factor;
  IntBox low;
  for (int axis = 0; axis < 3; ++axis) {
    low.lo[axis] = domain_.active_box.lo[axis] / f;
    low.hi[axis] = low.lo[axis] + domain_.active_box.size()[axis] / f - 1;
  }
  if (!(refined(low, f) == domain_.active_box)) return;
  std::array<FieldHandle, 3> stored;
  for (int axis = 0; axis < 3; ++axis) {
    stored[axis] = frame.grid(kTextureTypes[axis]);
    if (!stored[axis] || stored[axis]->dims() != low.size() + Vec3i(2, 2, 2)) return;
  }
  tex_.cover(low);
  for (int axis = 0; axis < 3; ++axis) tex_.all()[axis]->assign(*stored[axis]);
}

}  // namespace nbx
