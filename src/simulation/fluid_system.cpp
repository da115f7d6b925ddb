#include "simulation/fluid_system.h"

#include <algorithm>
#include <cstring>

#include "math/mfield_operations.h"
#include "simulation/fluid_tools3d.h"

namespace nbx {

namespace {

constexpr int kFrameTypes[3] = {kGridVelocityX, kGridVelocityY, kGridVelocityZ};
constexpr int kSecondSetTypes[3] = {kGridSecondVelocityX, kGridSecondVelocityY,
                                    kGridSecondVelocityZ};

bool has_all(const SimFrame& frame, const int (&types)[3]) {
  return std::all_of(std::begin(types), std::end(types),
                     [&](int type) { return frame.grids.contains(type); });
}

}  // namespace

void FluidSystem::resize(const Vec3i& delta) {
  redim(delta, velocity_);
  if (has_detail()) redim(delta, detail_);
}

// The air outside of the box moves with the wind, and so do new cells.
void FluidSystem::redim(const Vec3i& delta, std::array<MField, 3>& components) {
  for (int axis = 0; axis < 3; ++axis) {
    MField& component = components[axis];
    const float fill = domain_.wind.velocity()[axis];
    if (component.empty()) {
      component.resize(thread_location(), domain_.face_dims(axis));
      m_set(component, fill);
    } else {
      component.resize_offset(delta, domain_.face_dims(axis), fill);
    }
    m_set_border(component, fill);
  }
}

void FluidSystem::begin_step() {
  const Wind wind = domain_.wind;
  if (wind == wind_seen_) return;
  const Vec3d d = wind.velocity() - wind_seen_.velocity();
  wind_seen_ = wind;
  for (int axis = 0; axis < 3; ++axis) {
    MField& component = velocity_[axis];
    if (d[axis] != 0 && !component.empty()) m_add(component, component, d[axis]);
  }
  if (d != Vec3d() && !velocity_[0].empty()) zero_velocity_ = false;
  apply_boundary();
}

// The faces that move faster than the threshold.
void FluidSystem::content_box(IntBox& box) {
  const double threshold = params_.velocity_box_threshold;
  if (threshold < 0) return;
  IntBox local;
  for (auto* components : {&velocity_, &detail_})
    for (MField& component : *components)
      if (!component.empty()) local = box_union(local, m_min_bbox(component, threshold));
  if (!local.empty()) box = domain_.in_domain(local);
}

void FluidSystem::apply_boundary() {
  for (int axis = 0; axis < 3; ++axis)
    if (MField& component = velocity_[axis]; !component.empty())
      m_velocity_boundary(axis, component, domain_);
}

void FluidSystem::clear() {
  for (MField& component : velocity_) component.release();
  release_detail();
  zero_velocity_ = true;
  wind_seen_ = {};
}

void FluidSystem::release_detail() {
  for (MField& component : detail_) component.release();
}

std::array<MField*, 3> FluidSystem::tracer_velocity() {
  std::array<MField*, 3> tracer{};
  for (int axis = 0; axis < 3; ++axis)
    tracer[axis] = detail_[axis].empty() ? &velocity_[axis] : &detail_[axis];
  return tracer;
}

void FluidSystem::store(SimFrame& frame, const std::set<int>& channels, const GridMatrix& matrix) {
  if (!channels.contains(kVelocity)) return;
  const auto add = [&](MField& field, int type) {
    if (field.empty()) return;
    field.move_to(kCpu);
    frame.add(field.cpu_handle(), type, domain_.origin(), matrix);
  };
  const std::array<MField*, 3> shown = tracer_velocity();
  for (int axis = 0; axis < 3; ++axis) add(*shown[axis], kFrameTypes[axis]);
  if (!channels.contains(kSecondVelocity)) return;
  for (int axis = 0; axis < 3; ++axis) add(velocity_[axis], kSecondSetTypes[axis]);
}

bool FluidSystem::has_velocity(const SimFrame& frame) { return has_all(frame, kFrameTypes); }

void FluidSystem::load(SimFrame& frame) {
  if (!has_velocity(frame)) {
    clear();
    resize({0, 0, 0});
    wind_seen_ = domain_.wind;
    zero_velocity_ = wind_seen_.velocity() == Vec3d();
    return;
  }
  const auto take = [&](const int(&types)[3], std::array<MField, 3>& components) {
    for (int axis = 0; axis < 3; ++axis) {
      MField& component = components[axis];
      component.assign(*frame.grid(types[axis]));
      if (component.dims() != domain_.face_dims(axis))
        component.resize_offset({}, domain_.face_dims(axis), 0);
    }
  };
  take(kFrameTypes, detail_);
  take(has_all(frame, kSecondSetTypes) ? kSecondSetTypes : kFrameTypes, velocity_);
  zero_velocity_ = std::all_of(velocity_.begin(), velocity_.end(),
                               [](MField& component) { return m_infnorm(component) == 0; });
  // Frames show the plain velocity where there is no detail.
  if (detail_is_velocity()) release_detail();
}

bool FluidSystem::detail_is_velocity() {
  for (int axis = 0; axis < 3; ++axis) {
    const Field<float>& d = detail_[axis].read_cpu();
    const Field<float>& v = velocity_[axis].read_cpu();
    if (d.dims() != v.dims() || std::memcmp(d.data(), v.data(), d.count() * sizeof(float)) != 0)
      return false;
  }
  return true;
}

}  // namespace nbx
