// How a channel decays, burns and spreads.
#include <algorithm>
#include <cmath>

#include "math/field_filters.h"
#include "math/mfield_operations.h"
#include "math/sparse_field_operators.h"
#include "math/spline_operators.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/steps/scalar_fluid_channel.h"
#include "util/cuda_use_flags.h"

namespace nbx {

bool ScalarFluidChannel::blurs_driver() const {
  return params().driver_key != kNoChannel && params().driver_blur > 0;
}

// Rates are per frame. With f the substep's share of a frame, linear decay takes a = decay f,
// exponential decay takes the fraction a = 1 - (1 - decay)^f.
double ScalarFluidChannel::decay_of_step() const {
  const double f = clock_.share_of_frame();
  const ChannelParams& p = params();
  return p.decay_mode == DecayMode::kLinear ? p.decay * f : 1 - std::pow(1 - p.decay, f);
}

// The channel that controls the decay, blurred if the user wants that; null if there is none.
MField* ScalarFluidChannel::driver_field(FieldSource& fields, MField& blurred) const {
  MField* driver = fields.get_field(params().driver_key);
  if (!driver || !blurs_driver()) return driver;
  blurred.assign(*driver);
  try_gpu(no_kernel, [&] {
    const FieldHandle tmp = acquire_field(blurred.dims());
    box_blur3D(blurred.write_cpu(), *tmp, params().driver_blur / domain_.dx);
  });
  return &blurred;
}

void ScalarFluidChannel::decay_and_advect(FluidSystem& fluid, FieldSource& fields) {
  if (!simulated() || clock_.dt == 0) return;
  const ChannelParams& p = params();
  if (p.decay > 0) {
    RationalSpline limit = p.driver_spline;
    const float a = decay_of_step();
    MField blurred;
    if (!burned_.empty()) {
      m_axpy(field_, -1, burned_, field_);
      burned_.release();
    } else if (MField* driver = driver_field(fields, blurred)) {
      if (p.decay_mode == DecayMode::kLinear)
        m_decay_linear(field_, field_, *driver, a, limit);
      else
        m_decay_exponential(field_, field_, *driver, a, limit);
    } else if (p.decay_mode == DecayMode::kLinear) {
      m_add_max0(field_, field_, -a);
    } else {
      m_scal(field_, 1 - a, field_);
    }
  }
  fluid.advect_field(field_, p.conserve);
}

void ScalarFluidChannel::finish_step(CombustionSource& combustion, FieldSource& fields,
                                     SparseField<float, 3>& sources) {
  if (!simulated()) return;
  combustion.combustion(field_, key_);
  if (clock_.dt > 0 && params().diffusion > 0) diffuse();
  if (params().conserve) own_.assign(field_);
  m_asxpy(domain_.origin(), field_, 1, sources);
  sources.clear();
  m_max_a_x(field_, 0, field_);
  m_set_border(field_, 0);
  if (params().decay > 0 && !params().outputs.empty()) burn(fields);
}

void ScalarFluidChannel::diffuse() {
  const Vec3i dims = field_.dims();
  const Field<float>& kernel = filter_.kernel(domain_.dx, clock_.dt, params().diffusion,
                                              std::max({dims[0], dims[1], dims[2]}));
  try_gpu(no_kernel, [&] {
    const FieldHandle tmp = acquire_field(dims);
    convolve3D(kernel, field_.write_cpu(), *tmp);
  });
}

// Computes what burns in the next substep.
void ScalarFluidChannel::burn(FieldSource& fields) {
  const ChannelParams& p = params();
  RationalSpline limit = p.driver_spline;
  const float a = decay_of_step();
  MField blurred;
  MField* driver = driver_field(fields, blurred);
  burned_.resize(thread_location(), field_.dims());
  if (p.decay_mode == DecayMode::kLinear) {
    if (driver)
      m_emit_linear(burned_, field_, *driver, a, limit);
    else
      m_min_a_x(burned_, a, field_);
  } else {
    if (driver)
      m_emit_exponential(burned_, field_, *driver, a, limit);
    else
      m_scal(burned_, a, field_);
  }
}

void ScalarFluidChannel::combustion(MField& target, int key) {
  const auto found = params().outputs.find(key);
  if (found == params().outputs.end() || burned_.empty()) return;
  const auto [amount, additive] = found->second;
  if (additive) {
    m_axpy(target, amount, burned_, target);
    return;
  }
  // A lifted target sees the rate of a whole frame, whatever the length of the substep.
  const double share =
      params().decay_mode == DecayMode::kLinear ? clock_.share_of_frame() : decay_of_step();
  if (share > 0) m_max_ax_y(target, amount / share, burned_, target);
}

bool ScalarFluidChannel::add_divergence(MField& target, double dt) {
  if (!simulated() || burned_.empty() || !(dt > 0)) return false;
  const auto found = params().outputs.find(kExpansion);
  if (found == params().outputs.end()) return false;
  m_axpy(target, found->second.amount / dt, burned_, target);
  return true;
}

// What burned is kept only for the expansion and for a blurred driver.
void ScalarFluidChannel::after_sources() {
  if (burned_.empty() || blurs_driver()) return;
  const auto found = params().outputs.find(kExpansion);
  if (found == params().outputs.end() || found->second.amount == 0) burned_.release();
}

void ScalarFluidChannel::end_step() {
  own_.release();
  if (!blurs_driver()) burned_.release();
}

}  // namespace nbx
