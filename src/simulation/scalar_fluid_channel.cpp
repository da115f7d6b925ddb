#include "simulation/scalar_fluid_channel.h"

#include "math/mfield_operations.h"
#include "math/sparse_field_operators.h"
#include "simulation/fluid_tools3d.h"

namespace nbx {

void ScalarFluidChannel::resize(const Vec3i& delta) {
  solid_.reset();
  if (!field_.empty()) field_.resize_offset(delta, center_dims(), 0);
  if (!burned_.empty()) burned_.resize_offset(delta, center_dims(), 0);
}

void ScalarFluidChannel::begin_step() {
  if (!simulated() || !field_.empty()) return;
  field_.resize(thread_location(), center_dims());
  field_.zero();
}

// Content is what lies above the threshold, with a cell round it, and what sources gave just now.
void ScalarFluidChannel::content_box(IntBox& box) {
  if (!simulated()) return;
  if (!field_.empty()) {
    IntBox local = m_min_bbox(field_, static_cast<float>(params().box_threshold));
    if (!local.empty()) {
      const Vec3i origin = settings_.active_box.lo - Vec3i(1, 1, 1);
      box = {local.lo + origin - Vec3i(1, 1, 1), local.hi + origin + Vec3i(1, 1, 1)};
    }
  }
  IntBox given;
  src_bbox(given);
  box = box_union(box, given);
}

void ScalarFluidChannel::src_bbox(IntBox& box) {
  if (simulated()) box = min_bbox(sources_, 0);
}

void ScalarFluidChannel::set_solids(const Solids& solids) {
  solid_ = solids.phi;
  if (solid_ && !field_.empty()) m_set_channel_inside_solid(*solid_, field_, false, 0);
}

void ScalarFluidChannel::clear() {
  field_.release();
  burned_.release();
  sources_.clear();
  filter_.release();
  solid_.reset();
}

void ScalarFluidChannel::add_source(const SimulationObjectParameters& parameters,
                                    const SparseField<float, 3>& weights) {
  const auto found = parameters.amounts.find(key_);
  if (!simulated() || found == parameters.amounts.end() || !(found->second > 0)) return;
  const float amount = found->second;
  if (parameters.add_keys.contains(key_) || field_.empty())
    sparse_axpy(sources_, amount, weights);
  else
    sparse_raise(sources_, amount, weights, settings_.active_box.lo - Vec3i(1, 1, 1),
                 field_.read_cpu());
}

void ScalarFluidChannel::store(SimFrame& frame, const SimSettings& settings,
                               const GridMatrix& matrix) {
  if (settings.cached_channels.contains(kBurned) && !burned_.empty()) {
    burned_.move_to(kCpu);
    frame.add(burned_.cpu_handle(), kGridBurned, settings.active_box.lo - Vec3i(1, 1, 1), matrix);
  }
  if (!settings.cached_channels.contains(key_) || field_.empty()) return;
  const auto add = [&](MField& field) {
    field.move_to(kCpu);
    frame.add(field.cpu_handle(), params().grid_type, settings.active_box.lo - Vec3i(1, 1, 1),
              matrix);
  };
  if (!solid_ || !settings.mask_channels_by_solid) {
    add(field_);
    return;
  }
  MField masked(thread_location(), field_.dims());
  masked.assign(field_);
  m_set_channel_inside_solid(*solid_, masked, true, 0);
  add(masked);
}

void ScalarFluidChannel::load(SimFrame& frame) {
  burned_.release();
  if (!simulated()) return;
  const auto take = [&](MField& field, int type) {
    if (!frame.grids.contains(type)) return;
    field.assign(*frame.grid(type));
    if (field.dims() != center_dims()) field.resize_offset({}, center_dims(), 0);
  };
  take(field_, params().grid_type);
  if (blurs_driver() && !params().outputs.empty()) take(burned_, kGridBurned);
}

MField* ScalarFluidChannel::get_field(int key) {
  return key == key_ && !field_.empty() ? &field_ : nullptr;
}

void ScalarFluidChannel::add_forces(FluidSystem& fluid, double dt) {
  if (!simulated() || !(params().buoyancy > 0) || field_.empty()) return;
  // A face between two cells takes half of what each cell pushes.
  const Vec3d push = normalized(params().direction) * (dt * 0.5 * params().buoyancy);
  m_add_center_to_mac(fluid.U(), fluid.V(), fluid.W(), field_, static_cast<float>(push[0]),
                      static_cast<float>(push[1]), static_cast<float>(push[2]));
}

}  // namespace nbx
