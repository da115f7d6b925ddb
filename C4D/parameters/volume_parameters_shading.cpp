#include "C4D/parameters/volume_parameter_groups.h"
#include "C4D/parameters/volume_shading_parameters.h"

namespace nbx {

using namespace table;

namespace {

constexpr host::CurveMode kLinear = host::CurveMode::Linear;
constexpr host::CurveMode kSmooth = host::CurveMode::Smooth;

/// A parameter that selects a channel for a shader.
host::ParameterInfo shader_channel(std::int32_t id, const char* symbol, std::int32_t value,
                                   const char* help) {
  host::ParameterInfo info = channel_choice(id, symbol, help);
  info.default_value = value;
  for (const auto& [ramp, name] : {std::pair{OVOLUME_CHANNEL_RAMP_X, "ramp_x"},
                                   {OVOLUME_CHANNEL_RAMP_Y, "ramp_y"},
                                   {OVOLUME_CHANNEL_RAMP_Z, "ramp_z"}})
    info.cycle.push_back({ramp, name});
  return info;
}

host::ParameterInfo blur(std::int32_t id, const char* symbol) {
  return real(id, symbol, 0, 0, kUnbounded, "units", "Radius over which that channel is averaged");
}

struct NoiseIds {
  std::int32_t amount, scale_a, scale_b, gain, period;
};

/// Detail noise of one shader; the symbols are those of the ids.
ParameterList detail_noise(const NoiseIds& ids, const std::string& prefix) {
  const auto symbol = [&](const char* name) { return prefix + name; };
  return {
      real(ids.amount, symbol("_AMOUNT").c_str(), 0, 0, kUnbounded, "%",
           "Strength of the detail noise; 0: none"),
      real(ids.scale_a, symbol("_SCALE_A").c_str(), 1, 0, kUnbounded, "units",
           "One end of the noise's sizes"),
      real(ids.scale_b, symbol("_SCALE_B").c_str(), 1, 0, kUnbounded, "units",
           "The other end of the noise's sizes"),
      real(ids.gain, symbol("_GAIN").c_str(), 0.56, 0.001, 1, "",
           "Noise of one size over that of twice the size"),
      real(ids.period, symbol("_PERIOD").c_str(), 1, 0, kUnbounded, "s",
           "Time in which the noise changes; 0: it stays"),
  };
}

ParameterList smoke_shading() {
  return {
      shader_channel(OVOLUME_SMOKE_CHANNEL, "OVOLUME_SMOKE_CHANNEL", OVOLUME_CHANNEL_NONE,
                     "Channel that is seen as smoke; none, or one that isn't cached: no smoke"),
      blur(OVOLUME_SMOKE_BLUR, "OVOLUME_SMOKE_BLUR"),
      straight_curve(OVOLUME_SMOKE_CURVE, "OVOLUME_SMOKE_CURVE", {{0, 0}, {1, 1}},
                     "From the channel's value to the place on smoke_gradient"),
      gradient(OVOLUME_SMOKE_GRADIENT, "OVOLUME_SMOKE_GRADIENT", {{{0, {1, 1, 1}}, {1, {1, 1, 1}}}},
               "Color of the smoke"),
      shader_channel(OVOLUME_SMOKE_DENSITY_CHANNEL, "OVOLUME_SMOKE_DENSITY_CHANNEL",
                     OVOLUME_CHANNEL_NONE,
                     "Channel that makes the smoke dense; none: smoke_channel does"),
      blur(OVOLUME_SMOKE_DENSITY_BLUR, "OVOLUME_SMOKE_DENSITY_BLUR"),
      straight_curve(OVOLUME_SMOKE_DENSITY_CURVE, "OVOLUME_SMOKE_DENSITY_CURVE", {{0, 0}, {1, 1}},
                     "From that channel's value to the density of the smoke"),
      real(OVOLUME_SMOKE_DENSITY, "OVOLUME_SMOKE_DENSITY", 15, 0, kUnbounded, "1/m",
           "How much light smoke of density 1 takes"),
      real(OVOLUME_SMOKE_ALBEDO, "OVOLUME_SMOKE_ALBEDO", 1, 0, kUnbounded, "",
           "Share of that light that the smoke scatters"),
      real(OVOLUME_SMOKE_DISPLACE, "OVOLUME_SMOKE_DISPLACE", 0, -kUnbounded, kUnbounded, "frames",
           "Time by which the smoke is moved along the velocity"),
  };
}

ParameterList fire_color() {
  return {
      cycle(
          OVOLUME_FIRE_COLOR_MODE, "OVOLUME_FIRE_COLOR_MODE", OVOLUME_FIRE_COLOR_BLACKBODY,
          {{OVOLUME_FIRE_COLOR_GRADIENT, "gradient"}, {OVOLUME_FIRE_COLOR_BLACKBODY, "black_body"}},
          "Colors by fire_gradient, or of a body that glows"),
      gradient(OVOLUME_FIRE_GRADIENT, "OVOLUME_FIRE_GRADIENT",
               {{{0, {0, 0, 0}}, {0.4, {1, 0.12, 0.01}}, {0.75, {1, 0.6, 0.12}}, {1, {1, 1, 0.8}}}},
               "Color of the fire in mode gradient"),
      real(OVOLUME_FIRE_GRADIENT_SCALE, "OVOLUME_FIRE_GRADIENT_SCALE", 1, 0, kUnbounded, "",
           "Brightness of fire_gradient"),
      real(OVOLUME_FIRE_TEMP_MIN, "OVOLUME_FIRE_TEMP_MIN", 600, 0, kUnbounded, "K",
           "Temperature of the body where fire_curve gives 0"),
      real(OVOLUME_FIRE_TEMP_MAX, "OVOLUME_FIRE_TEMP_MAX", 2200, 0, kUnbounded, "K",
           "Temperature of the body where fire_curve gives 1"),
      real(OVOLUME_FIRE_EXPOSURE, "OVOLUME_FIRE_EXPOSURE", 1, 0, kUnbounded, "",
           "Brightness of the body that is shown as 1"),
      real(OVOLUME_FIRE_COMPRESSION, "OVOLUME_FIRE_COMPRESSION", 5, 0, kUnbounded, "",
           "How far cool and hot fire are brought to one brightness; 0: as in nature"),
      real(OVOLUME_FIRE_TINT_R, "OVOLUME_FIRE_TINT_R", 1, 0, kUnbounded, "",
           "Factor of the body's red"),
      real(OVOLUME_FIRE_TINT_G, "OVOLUME_FIRE_TINT_G", 1, 0, kUnbounded, "",
           "Factor of the body's green"),
      real(OVOLUME_FIRE_TINT_B, "OVOLUME_FIRE_TINT_B", 1, 0, kUnbounded, "",
           "Factor of the body's blue"),
      button(OVOLUME_BAKE_FIRE, "OVOLUME_BAKE_FIRE",
             "Turns the colors of the glowing body into fire_gradient"),
  };
}

ParameterList fire_shading() {
  return {
      shader_channel(OVOLUME_FIRE_CHANNEL, "OVOLUME_FIRE_CHANNEL", OVOLUME_CHANNEL_TEMPERATURE,
                     "Channel that is seen as fire; none, or one that isn't cached: no fire"),
      blur(OVOLUME_FIRE_BLUR, "OVOLUME_FIRE_BLUR"),
      curve(OVOLUME_FIRE_CURVE, "OVOLUME_FIRE_CURVE",
            {{0, 0, kLinear, kLinear}, {0.16, 1, kSmooth, kSmooth}, {1, 0, kLinear, kLinear}},
            "From the channel's value to the fire's color"),
      shader_channel(OVOLUME_FIRE_DENSITY_CHANNEL, "OVOLUME_FIRE_DENSITY_CHANNEL",
                     OVOLUME_CHANNEL_NONE,
                     "Channel that makes the fire dense; none: fire_channel does"),
      blur(OVOLUME_FIRE_DENSITY_BLUR, "OVOLUME_FIRE_DENSITY_BLUR"),
      curve(OVOLUME_FIRE_DENSITY_CURVE, "OVOLUME_FIRE_DENSITY_CURVE",
            {{0.1, 0}, {0.25, 1}, {0.3, 0}},
            "From that channel's value to the density of the fire; at 0 no fire is seen"),
      real(OVOLUME_FIRE_DENSITY, "OVOLUME_FIRE_DENSITY", 2, 0, kUnbounded, "1/m",
           "How much light fire of density 1 takes: more hides what is behind a flame and "
           "dims thick flames; thin ones keep their brightness"),
      real(OVOLUME_FIRE_OCCLUSION, "OVOLUME_FIRE_OCCLUSION", 1, 0, kUnbounded, "",
           "Density of fire in which no smoke is left; 0: fire of any density"),
      real(OVOLUME_FIRE_DISPLACE, "OVOLUME_FIRE_DISPLACE", 0, -kUnbounded, kUnbounded, "frames",
           "Time by which the fire is moved along the velocity"),
  };
}

void append(ParameterList& all, ParameterList group) {
  for (auto& info : group) all.push_back(std::move(info));
}

}  // namespace

ParameterList shading_parameters() {
  ParameterList all = smoke_shading();
  append(all, detail_noise({OVOLUME_SMOKE_NOISE_AMOUNT, OVOLUME_SMOKE_NOISE_SCALE_A,
                            OVOLUME_SMOKE_NOISE_SCALE_B, OVOLUME_SMOKE_NOISE_GAIN,
                            OVOLUME_SMOKE_NOISE_PERIOD},
                           "OVOLUME_SMOKE_NOISE"));
  append(all, fire_shading());
  append(all, fire_color());
  append(all, detail_noise(
                  {OVOLUME_FIRE_NOISE_AMOUNT, OVOLUME_FIRE_NOISE_SCALE_A,
                   OVOLUME_FIRE_NOISE_SCALE_B, OVOLUME_FIRE_NOISE_GAIN, OVOLUME_FIRE_NOISE_PERIOD},
                  "OVOLUME_FIRE_NOISE"));
  return all;
}

}  // namespace nbx
