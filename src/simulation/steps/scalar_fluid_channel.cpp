#include "simulation/steps/scalar_fluid_channel.h"

#include "math/mfield_operations.h"
#include "simulation/fluid/conservation.h"
#include "simulation/fluid_tools3d.h"

namespace nbx {

void ScalarFluidChannel::resize(const Vec3i& delta) {
  solid_.reset();
  const auto move = [&](MField& field, bool zero) {
    if (field.empty()) return;
    if (!zero) return field.resize_offset(delta, domain_.center_dims(), 0);
    field.resize(domain_.center_dims());
    field.zero();
  };
  move(field_, held_.none());
  move(burned_, !burning_);
  if (!held_.none()) held_.forget();
  if (!own_.empty()) own_.resize_offset(delta, domain_.center_dims(), 0);
}

void ScalarFluidChannel::begin_step() {
  if (!simulated() || !field_.empty()) return;
  field_.resize(thread_location(), domain_.center_dims());
  field_.zero();
}

// Content is what lies above the threshold, with one cell around it.
void ScalarFluidChannel::content_box(IntBox& box) {
  if (!simulated() || field_.empty() || held_.none()) return;
  const IntBox local = m_min_bbox(field_, params().box_threshold);
  if (local.empty()) return;
  box = domain_.in_domain({local.lo - Vec3i(1, 1, 1), local.hi + Vec3i(1, 1, 1)});
}

void ScalarFluidChannel::set_solids(const Solids& solids) {
  solid_ = solids.phi;
  if (solid_ && !field_.empty()) {
    if (own_.empty())
      m_set_channel_inside_solid(*solid_, field_, false, 0);
    else
      displace_by_solids(field_, own_, *solid_);
  }
  own_.release();
}

void ScalarFluidChannel::clear() {
  field_.release();
  burned_.release();
  held_.forget();
  own_.release();
  filter_.release();
  solid_.reset();
}

void ScalarFluidChannel::store(SimFrame& frame, const std::set<int>& channels,
                               const GridMatrix& matrix) {
  const auto add = [&](MField& field, int grid_type) {
    field.move_to(kCpu);
    frame.add(field.cpu_handle(), grid_type, domain_.origin(), matrix);
  };
  if (channels.contains(kBurned) && !burned_.empty()) add(burned_, kGridBurned);
  if (!channels.contains(key_) || field_.empty()) return;
  if (!solid_ || !params_.mask_channels_by_solid) {
    add(field_, params().grid_type);
    return;
  }
  MField masked(thread_location(), field_.dims());
  masked.assign(field_);
  m_set_channel_inside_solid(*solid_, masked, true, 0);
  add(masked, params().grid_type);
}

void ScalarFluidChannel::load(SimFrame& frame) {
  burned_.release();
  burning_ = true;
  held_.forget();
  if (!simulated()) return;
  const auto take = [&](MField& field, int type) {
    if (!frame.grids.contains(type)) return;
    field.assign(*frame.grid(type));
    if (field.dims() != domain_.center_dims()) field.resize_offset({}, domain_.center_dims(), 0);
  };
  take(field_, params().grid_type);
  if (blurs_driver() && !params().outputs.empty()) take(burned_, kGridBurned);
}

MField* ScalarFluidChannel::get_field(int key) {
  return key == key_ && !field_.empty() ? &field_ : nullptr;
}

void ScalarFluidChannel::add_forces(FluidSystem& fluid, double dt) {
  if (!simulated() || !(params().buoyancy > 0) || field_.empty()) return;
  // A face gets half of the push of each of its two cells.
  const Vec3d push = normalized(params().direction) * (dt * 0.5 * params().buoyancy);
  m_add_center_to_mac(fluid.U(), fluid.V(), fluid.W(), field_, push[0], push[1], push[2]);
}

}  // namespace nbx
