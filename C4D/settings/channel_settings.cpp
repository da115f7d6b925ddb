#include "C4D/settings/channel_settings.h"

#include <algorithm>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/channel_choice.h"
#include "util/units.h"

namespace nbx {

namespace {

constexpr double kMostDecay = 0.999999;  // of an exponential decay, in a frame
constexpr double kDiffusionUnit = 100 * kMetersPerUnit * kMetersPerUnit;  // 100 units^2, in m^2

using Amount = Parameter<double>;

double at_least_0(const ParameterReader& p, const Amount& amount) {
  return std::max(p(amount), 0.0);
}

double part_per_frame(const ParameterReader& p, const Amount& part) {
  return std::clamp(p(part), 0.0, kMostDecay);
}

/// Density or temperature.
void read_smoke(ChannelParams& channel, const ParameterReader& p, const Amount& buoyancy,
                const Parameter<host::Vector>& direction, const Amount& decay, double unit_scale) {
  channel.decay_mode = DecayMode::kExponential;
  channel.decay = part_per_frame(p, decay);
  channel.buoyancy = at_least_0(p, buoyancy) * unit_scale;
  channel.direction = normalized(to_flipped_vector(p(direction)));
}

void read_fuel(ChannelParams& fuel, const ParameterReader& p, double unit_scale) {
  fuel.decay_mode = DecayMode::kLinear;
  fuel.decay = at_least_0(p, OVOLUME.DECAY_FUEL);
  fuel.driver_key = selected_channel(p, OVOLUME.FUEL_DRIVER);
  fuel.driver_spline = to_spline(p(OVOLUME.FUEL_CURVE));
  fuel.driver_blur = at_least_0(p, OVOLUME.FUEL_DRIVER_BLUR) * unit_scale;
  fuel.outputs[kBurn] = {1, false};
  fuel.outputs[kExpansion] = {at_least_0(p, OVOLUME.FUEL_TO_EXPANSION), true};
  fuel.outputs[kTemperature] = {at_least_0(p, OVOLUME.FUEL_TO_TEMPERATURE), false};
  fuel.outputs[kDensity] = {at_least_0(p, OVOLUME.FUEL_TO_DENSITY), true};
}

void read_burn(ChannelParams& burn, const ParameterReader& p) {
  const bool linear = p(OVOLUME.DECAY_MODE_BURN) == OVOLUME_DECAY_MODE_LINEAR;
  burn.decay_mode = linear ? DecayMode::kLinear : DecayMode::kExponential;
  burn.decay =
      linear ? at_least_0(p, OVOLUME.DECAY_LINEAR_BURN) : part_per_frame(p, OVOLUME.DECAY_BURN);
}

}  // namespace

int selected_channel(const ParameterReader& p, const Parameter<VolumeChannel>& choice) {
  return channel_key(p(choice));
}

void read_channel_sets(SolverParams& params, FrameSink& sink, const ParameterReader& p) {
  const auto channel = [&](int key, const Parameter<bool>& simulate, const Parameter<bool>& cache) {
    if (!p(simulate)) return;
    params.simulated_channels.insert(key);
    if (p(cache)) sink.cached_channels.insert(key);
  };
  channel(kDensity, OVOLUME.SIMULATE_DENSITY, OVOLUME.CACHE_DENSITY);
  channel(kTemperature, OVOLUME.SIMULATE_TEMPERATURE, OVOLUME.CACHE_TEMPERATURE);
  channel(kFuel, OVOLUME.SIMULATE_FUEL, OVOLUME.CACHE_FUEL);
  channel(kBurn, OVOLUME.SIMULATE_BURN, OVOLUME.CACHE_BURN);
  if (p(OVOLUME.CACHE_VELOCITY)) sink.cached_channels.insert(kVelocity);
  if (p(OVOLUME.CACHE_SOLID)) sink.cached_channels.insert(kSolid);
}

void read_channel_params(SolverParams& params, const ParameterReader& p) {
  const auto common = [&](int key, const Amount& diffusion, const Amount& threshold,
                          const Parameter<bool>& conserve) {
    ChannelParams channel = default_channel_params(key);
    channel.conserve = p(conserve);
    channel.diffusion = at_least_0(p, diffusion) * kDiffusionUnit;
    channel.box_threshold = p(threshold);
    return channel;
  };
  ChannelParams temperature =
      common(kTemperature, OVOLUME.DIFFUSION_TEMPERATURE, OVOLUME.BOX_THRESHOLD_TEMPERATURE,
             OVOLUME.CONSERVE_TEMPERATURE);
  read_smoke(temperature, p, OVOLUME.BUOYANCY_TEMPERATURE, OVOLUME.DIRECTION_TEMPERATURE,
             OVOLUME.DECAY_TEMPERATURE, params.unit_scale);
  ChannelParams density = common(kDensity, OVOLUME.DIFFUSION_DENSITY, OVOLUME.BOX_THRESHOLD_DENSITY,
                                 OVOLUME.CONSERVE_DENSITY);
  read_smoke(density, p, OVOLUME.BUOYANCY_DENSITY, OVOLUME.DIRECTION_DENSITY, OVOLUME.DECAY_DENSITY,
             params.unit_scale);
  ChannelParams fuel =
      common(kFuel, OVOLUME.DIFFUSION_FUEL, OVOLUME.BOX_THRESHOLD_FUEL, OVOLUME.CONSERVE_FUEL);
  read_fuel(fuel, p, params.unit_scale);
  ChannelParams burn =
      common(kBurn, OVOLUME.DIFFUSION_BURN, OVOLUME.BOX_THRESHOLD_BURN, OVOLUME.CONSERVE_BURN);
  read_burn(burn, p);
  for (ChannelParams* channel : {&temperature, &density, &fuel, &burn})
    params.channel_params[channel->key] = std::move(*channel);
}

}  // namespace nbx
