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
  const bool decays = params().decay > 0, burned = decays && !burned_.empty();
  if (burned) {
    if (burning_) m_axpy(field_, -1, burned_, field_);
    burned_.release();
  }
  if (burned || !held_.known()) m_measure(held_, field_);
  if (held_.none()) return;
  if (decays && !burned) decay(fields);
  fluid.advect_field(field_, held_, params().conserve);
}

void ScalarFluidChannel::decay(FieldSource& fields) {
  const ChannelParams& p = params();
  const bool linear = p.decay_mode == DecayMode::kLinear;
  const float a = decay_of_step();
  MField blurred;
  if (MField* driver = driver_field(fields, blurred)) {
    RationalSpline limit = p.driver_spline;
    (linear ? m_decay_linear : m_decay_exponential)(field_, field_, *driver, a, limit, &held_);
  } else if (linear) {
    m_add_max0(field_, field_, -a, &held_);
  } else {
    m_scal(field_, 1 - a, field_, &held_);
  }
}

void ScalarFluidChannel::finish_step(CombustionSource& combustion, FieldSource& fields,
                                     SparseField<float, 3>& sources) {
  if (!simulated()) return;
  const bool fed = combustion.combustion(field_, key_);
  if (fed || !held_.none() || !sources.empty() || clock_.dt == 0) {
    if (clock_.dt > 0 && params().diffusion > 0) diffuse();
    if (params().conserve) own_.assign(field_);
    m_asxpy(domain_.origin(), field_, 1, sources);
    sources.clear();
    m_measure_positive(held_, field_);
  }
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
  const bool linear = p.decay_mode == DecayMode::kLinear;
  const float a = decay_of_step();
  burned_.resize(thread_location(), field_.dims());
  burning_ = !held_.none();
  if (!burning_) return burned_.zero();
  MField blurred;
  if (MField* driver = driver_field(fields, blurred)) {
    RationalSpline limit = p.driver_spline;
    (linear ? m_emit_linear : m_emit_exponential)(burned_, field_, *driver, a, limit, &held_);
  } else if (linear) {
    m_min_a_x(burned_, a, field_, &held_);
  } else {
    m_scal(burned_, a, field_, &held_);
  }
}

bool ScalarFluidChannel::combustion(MField& target, int key) {
  const auto found = params().outputs.find(key);
  if (found == params().outputs.end() || burned_.empty()) return false;
  const auto [amount, additive] = found->second;
  if (additive) {
    if (burning_) m_axpy(target, amount, burned_, target);
    return burning_;
  }
  // A lifted target sees the rate of a whole frame, whatever the length of the substep.
  const double share =
      params().decay_mode == DecayMode::kLinear ? clock_.share_of_frame() : decay_of_step();
  if (!(share > 0)) return false;
  m_max_ax_y(target, amount / share, burned_, target);
  return burning_;
}

bool ScalarFluidChannel::add_divergence(MField& target, double dt) {
  if (!simulated() || burned_.empty() || !burning_ || !(dt > 0)) return false;
  const auto found = params().outputs.find(kExpansion);
  if (found == params().outputs.end()) return false;
  target.provide(burned_.dims());
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
