#include "simulation/scalar_fluid_channel.h"

#include <cmath>

#include "math/mfield_operations.h"
#include "math/sparse_field_operators.h"
#include "simulation/fluid_tools3d.h"

namespace nbx {

ChannelParams default_channel_params(int key) {
  ChannelParams p;
  p.key = key;
  switch (key) {
    case kDensity:
      p.grid_type = kGridDensity;
      p.buoyancy = 10;
      p.direction = {0, -1, 0};
      break;
    case kTemperature:
      p.grid_type = kGridTemperature;
      p.buoyancy = 6;
      p.direction = {0, 1, 0};
      break;
    case kFuel:
      p.grid_type = kGridFuel;
      p.decay_mode = DecayMode::kLinear;
      p.decay = 0.8;
      break;
    case kBurn:
      p.grid_type = kGridBurn;
      break;
    default:
      break;
  }
  return p;
}

void ScalarFluidChannel::resize(const Vec3i& delta) {
  if (!field_.empty()) field_.resize_offset(delta, centre_dims(), 0);
}

void ScalarFluidChannel::begin_step() {
  if (!simulated() || !field_.empty()) return;
  field_.resize(thread_location(), centre_dims());
  field_.zero();
}

void ScalarFluidChannel::set_solids(const Solids& solids) {
  solid_ = solids.phi;
  if (solid_ && !field_.empty()) m_set_channel_inside_solid(*solid_, field_, false, 0);
}

void ScalarFluidChannel::clear() {
  field_.release();
  sources_.clear();
  solid_.reset();
}

void ScalarFluidChannel::decay_and_advect(FluidSystem& fluid) {
  if (!simulated() || settings_.dt == 0) return;
  const ChannelParams& p = params();
  if (p.decay > 0) {
    // Rates are per frame: a substep takes its share of them.
    const double part = settings_.dt / settings_.frame_duration;
    if (p.decay_mode == DecayMode::kLinear)
      m_add_max0(field_, field_, static_cast<float>(-p.decay * part));
    else
      m_scal(field_, static_cast<float>(std::pow(1 - p.decay, part)), field_);
  }
  fluid.advect_field(field_);
}

void ScalarFluidChannel::add_source(const SimulationObjectParameters& parameters,
                                    const SparseField<float, 3>& weights) {
  const auto found = parameters.amounts.find(key_);
  if (!simulated() || found == parameters.amounts.end() || !(found->second > 0)) return;
  const float amount = static_cast<float>(found->second);
  if (parameters.add_keys.contains(key_) || field_.empty())
    sparse_axpy(sources_, amount, weights);
  else
    sparse_raise(sources_, amount, weights, settings_.active_box.lo - Vec3i(1, 1, 1),
                 field_.cpu_field());
}

void ScalarFluidChannel::finish_step() {
  if (!simulated()) return;
  m_asxpy(settings_.active_box.lo - Vec3i(1, 1, 1), field_, 1, sources_);
  sources_.clear();
  m_max_a_x(field_, 0, field_);
  m_set_border(field_, 0);
}

void ScalarFluidChannel::store(SimFrame& frame, const SimSettings& settings,
                               const GridMatrix& matrix) {
  if (!settings.cached_channels.contains(key_) || field_.empty()) return;
  field_.move_to(kCpu);
  frame.add(field_.cpu_handle(), params().grid_type, settings.active_box.lo - Vec3i(1, 1, 1),
            matrix);
}

void ScalarFluidChannel::load(SimFrame& frame) {
  const int type = params().grid_type;
  if (!simulated() || !frame.grids.contains(type)) return;
  field_.assign(*frame.grid(type));
  if (field_.dims() != centre_dims()) field_.resize_offset({}, centre_dims(), 0);
}

MField* ScalarFluidChannel::get_field(int key) {
  return key == key_ && !field_.empty() ? &field_ : nullptr;
}

void ScalarFluidChannel::add_forces(FluidSystem& fluid, double dt) {
  if (!simulated() || !(params().buoyancy > 0) || field_.empty()) return;
  // A face between two cells takes half of what each cell pushes.
  const Vec3d push = normalised(params().direction) * (dt * 0.5 * params().buoyancy);
  m_add_center_to_mac(fluid.U(), fluid.V(), fluid.W(), field_, static_cast<float>(push[0]),
                      static_cast<float>(push[1]), static_cast<float>(push[2]));
}

}  // namespace nbx
