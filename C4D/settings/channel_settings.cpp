#include "C4D/settings/channel_settings.h"

#include <algorithm>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"

namespace nbx {

namespace {

constexpr double kMostDecay = 0.999999;  // largest fraction per frame of an exponential decay

double at_least_0(const ParameterReader& p, std::int32_t id) { return std::max(p.real(id), 0.0); }

double part_per_frame(const ParameterReader& p, std::int32_t id) {
  return std::clamp(p.real(id), 0.0, kMostDecay);
}

/// Density or temperature.
void read_smoke(ChannelParams& channel, const ParameterReader& p, std::int32_t buoyancy,
                std::int32_t direction, std::int32_t decay, double unit_scale) {
  channel.decay_mode = DecayMode::kExponential;
  channel.decay = part_per_frame(p, decay);
  channel.buoyancy = at_least_0(p, buoyancy) * unit_scale;
  channel.direction = normalized(to_flipped_vector(p.vector(direction)));
}

void read_fuel(ChannelParams& fuel, const ParameterReader& p, double unit_scale) {
  fuel.decay_mode = DecayMode::kLinear;
  fuel.decay = at_least_0(p, OVOLUME_DECAY_FUEL);
  fuel.driver_key = selected_channel(p, OVOLUME_FUEL_DRIVER);
  fuel.driver_spline = to_spline(p.curve(OVOLUME_FUEL_CURVE));
  fuel.driver_blur = at_least_0(p, OVOLUME_FUEL_DRIVER_BLUR) * unit_scale;
  fuel.outputs[kBurn] = {1, false};
  fuel.outputs[kExpansion] = {at_least_0(p, OVOLUME_FUEL_TO_EXPANSION), true};
  fuel.outputs[kTemperature] = {at_least_0(p, OVOLUME_FUEL_TO_TEMPERATURE), false};
  fuel.outputs[kDensity] = {at_least_0(p, OVOLUME_FUEL_TO_DENSITY), true};
}

void read_burn(ChannelParams& burn, const ParameterReader& p) {
  const bool linear = p.whole(OVOLUME_DECAY_MODE_BURN) == OVOLUME_DECAY_MODE_LINEAR;
  burn.decay_mode = linear ? DecayMode::kLinear : DecayMode::kExponential;
  burn.decay =
      linear ? at_least_0(p, OVOLUME_DECAY_LINEAR_BURN) : part_per_frame(p, OVOLUME_DECAY_BURN);
}

}  // namespace

int selected_channel(const ParameterReader& p, std::int32_t id) {
  switch (p.whole(id)) {
    case OVOLUME_CHANNEL_DENSITY:
      return kDensity;
    case OVOLUME_CHANNEL_TEMPERATURE:
      return kTemperature;
    case OVOLUME_CHANNEL_FUEL:
      return kFuel;
    case OVOLUME_CHANNEL_BURN:
      return kBurn;
    default:
      return kNoChannel;
  }
}

void read_channel_sets(SolverParams& params, FrameSink& sink, const ParameterReader& p) {
  const auto channel = [&](int key, std::int32_t simulate, std::int32_t cache) {
    if (!p.flag(simulate)) return;
    params.simulated_channels.insert(key);
    if (p.flag(cache)) sink.cached_channels.insert(key);
  };
  channel(kDensity, OVOLUME_SIMULATE_DENSITY, OVOLUME_CACHE_DENSITY);
  channel(kTemperature, OVOLUME_SIMULATE_TEMPERATURE, OVOLUME_CACHE_TEMPERATURE);
  channel(kFuel, OVOLUME_SIMULATE_FUEL, OVOLUME_CACHE_FUEL);
  channel(kBurn, OVOLUME_SIMULATE_BURN, OVOLUME_CACHE_BURN);
  if (p.flag(OVOLUME_CACHE_VELOCITY)) sink.cached_channels.insert(kVelocity);
  if (p.flag(OVOLUME_CACHE_SOLID)) sink.cached_channels.insert(kSolid);
}

void read_channel_params(SolverParams& params, const ParameterReader& p) {
  const auto common = [&](int key, std::int32_t diffusion, std::int32_t threshold) {
    ChannelParams channel = default_channel_params(key);
    channel.diffusion = at_least_0(p, diffusion) * 0.01;
    channel.box_threshold = p.real(threshold);
    return channel;
  };
  ChannelParams temperature =
      common(kTemperature, OVOLUME_DIFFUSION_TEMPERATURE, OVOLUME_BOX_THRESHOLD_TEMPERATURE);
  read_smoke(temperature, p, OVOLUME_BUOYANCY_TEMPERATURE, OVOLUME_DIRECTION_TEMPERATURE,
             OVOLUME_DECAY_TEMPERATURE, params.unit_scale);
  ChannelParams density =
      common(kDensity, OVOLUME_DIFFUSION_DENSITY, OVOLUME_BOX_THRESHOLD_DENSITY);
  read_smoke(density, p, OVOLUME_BUOYANCY_DENSITY, OVOLUME_DIRECTION_DENSITY, OVOLUME_DECAY_DENSITY,
             params.unit_scale);
  ChannelParams fuel = common(kFuel, OVOLUME_DIFFUSION_FUEL, OVOLUME_BOX_THRESHOLD_FUEL);
  read_fuel(fuel, p, params.unit_scale);
  ChannelParams burn = common(kBurn, OVOLUME_DIFFUSION_BURN, OVOLUME_BOX_THRESHOLD_BURN);
  read_burn(burn, p);
  for (ChannelParams* channel : {&temperature, &density, &fuel, &burn})
    params.channel_params[channel->key] = std::move(*channel);
}

}  // namespace nbx
