// How smoke and fire look.
#pragma once

#include "C4D/parameters/volume_channel.h"

namespace nbx {

/// Values of FIRE_COLOR_MODE.
enum VolumeFireColorMode : std::int32_t {
  OVOLUME_FIRE_COLOR_GRADIENT = 1179,
  OVOLUME_FIRE_COLOR_BLACKBODY = 1180,
};

class ShaderGroup : public VolumeGroup {
 protected:
  ShaderGroup() : VolumeGroup(Changes::kPicture) {}

  Line<VolumeChannel> shader_channel(std::int32_t id, const char* name, VolumeChannel value,
                                     const char* help) {
    return channel(id, name, value, help,
                   {{OVOLUME_CHANNEL_RAMP_X, "ramp_x"},
                    {OVOLUME_CHANNEL_RAMP_Y, "ramp_y"},
                    {OVOLUME_CHANNEL_RAMP_Z, "ramp_z"}});
  }
  Line<double> blur(std::int32_t id, const char* name, const char* help) {
    return real(id, name, 0, 0, kUnbounded, "units", help);
  }
  Line<double> noise_size(std::int32_t id, const char* name) {
    return real(id, name, 1, 0, kUnbounded, "units",
                "One of the two sizes between which the detail noise lies");
  }
  Line<double> noise_gain(std::int32_t id, const char* name) {
    return real(id, name, 0.56, 0.001, 1, "",
                "Strength of detail noise relative to noise of twice the size: higher values look "
                "finer");
  }
  Line<double> noise_period(std::int32_t id, const char* name) {
    return real(id, name, 1, 0, kUnbounded, "s",
                "Time in which the detail noise changes; 0: it doesn't change");
  }
};

struct SmokeShadingParameters : ShaderGroup {
  Choice<VolumeChannel> SMOKE_CHANNEL =
      shader_channel(1186, "SMOKE_CHANNEL", OVOLUME_CHANNEL_NONE,
                     "Channel that is drawn as smoke; with none, or a channel that isn't cached, "
                     "there is no smoke");
  const Condition has_smoke = chosen(SMOKE_CHANNEL);
  Real SMOKE_BLUR =
      blur(1271, "SMOKE_BLUR", "Radius over which smoke_channel is averaged: softens detail")
          .enabled_if(has_smoke);
  Curve SMOKE_CURVE =
      straight_curve(
          1201, "SMOKE_CURVE", {{0, 0}, {1, 1}},
          "Maps the value of smoke_channel to the position on smoke_gradient and, without "
          "smoke_density_channel, to the density of the smoke")
          .enabled_if(has_smoke);
  Gradient SMOKE_GRADIENT =
      gradient(1202, "SMOKE_GRADIENT", {{{0, {1, 1, 1}}, {1, {1, 1, 1}}}}, "Color of the smoke")
          .enabled_if(has_smoke);
  Choice<VolumeChannel> SMOKE_DENSITY_CHANNEL =
      shader_channel(
          1399, "SMOKE_DENSITY_CHANNEL", OVOLUME_CHANNEL_NONE,
          "Channel that sets how dense the smoke is; none: smoke_channel and smoke_curve set "
          "it, and smoke_density_curve has no effect")
          .enabled_if(has_smoke);
  const Condition has_smoke_density = has_smoke && chosen(SMOKE_DENSITY_CHANNEL);
  Real SMOKE_DENSITY_BLUR =
      blur(1400, "SMOKE_DENSITY_BLUR",
           "Radius over which smoke_density_channel is averaged: softens the edges of the smoke")
          .enabled_if(has_smoke_density);
  Curve SMOKE_DENSITY_CURVE =
      straight_curve(1401, "SMOKE_DENSITY_CURVE", {{0, 0}, {1, 1}},
                     "Maps the value of smoke_density_channel to the density of the smoke")
          .enabled_if(has_smoke_density);
  Real SMOKE_DENSITY =
      real(1018, "SMOKE_DENSITY", 15, 0, kUnbounded, "1/m",
           "How strongly smoke of density 1 dims light: higher values look thicker")
          .enabled_if(has_smoke);
  Real SMOKE_ALBEDO = real(1204, "SMOKE_ALBEDO", 1, 0, kUnbounded, "",
                           "Fraction of the dimmed light that smoke scatters: 0 is black, 1 bright")
                          .enabled_if(has_smoke);
  Real SMOKE_DISPLACE = real(1016, "SMOKE_DISPLACE", 0, -kUnbounded, kUnbounded, "frames",
                             "Time by which smoke is moved along the velocity")
                            .enabled_if(has_smoke);
  Real SMOKE_NOISE_AMOUNT = real(1379, "SMOKE_NOISE_AMOUNT", 0, 0, kUnbounded, "%",
                                 "Strength of the detail noise in the smoke; 0: none")
                                .enabled_if(has_smoke);
  Real SMOKE_NOISE_SCALE_A = noise_size(1380, "SMOKE_NOISE_SCALE_A").enabled_if(has_smoke);
  Real SMOKE_NOISE_SCALE_B = noise_size(1381, "SMOKE_NOISE_SCALE_B").enabled_if(has_smoke);
  Real SMOKE_NOISE_GAIN = noise_gain(1382, "SMOKE_NOISE_GAIN").enabled_if(has_smoke);
  Real SMOKE_NOISE_PERIOD = noise_period(1410, "SMOKE_NOISE_PERIOD").enabled_if(has_smoke);
};

struct FireShadingParameters : SmokeShadingParameters {
  static constexpr host::CurveMode kLinear = host::CurveMode::Linear;
  static constexpr host::CurveMode kSmooth = host::CurveMode::Smooth;

  Choice<VolumeChannel> FIRE_CHANNEL =
      shader_channel(1162, "FIRE_CHANNEL", OVOLUME_CHANNEL_TEMPERATURE,
                     "Channel that is drawn as fire; with none, or a channel that isn't cached, "
                     "there is no fire");
  const Condition has_fire = chosen(FIRE_CHANNEL);
  Real FIRE_BLUR =
      blur(1272, "FIRE_BLUR", "Radius over which fire_channel is averaged: softens detail")
          .enabled_if(has_fire);
  Curve FIRE_CURVE =
      curve(1200, "FIRE_CURVE",
            {{0, 0, kLinear, kLinear}, {0.16, 1, kSmooth, kSmooth}, {1, 0, kLinear, kLinear}},
            "Maps the value of fire_channel to the color of the fire: 0 is the gradient's start or "
            "black, 1 its end or fire_temp_max. Without fire_density_channel it is also the "
            "density of the fire")
          .enabled_if(has_fire);
  Choice<VolumeChannel> FIRE_DENSITY_CHANNEL =
      shader_channel(
          1170, "FIRE_DENSITY_CHANNEL", OVOLUME_CHANNEL_NONE,
          "Channel that sets how dense the fire is; none: fire_channel and fire_curve set it, "
          "and fire_density_curve has no effect")
          .enabled_if(has_fire);
  const Condition has_fire_density = has_fire && chosen(FIRE_DENSITY_CHANNEL);
  Real FIRE_DENSITY_BLUR =
      blur(1273, "FIRE_DENSITY_BLUR",
           "Radius over which fire_density_channel is averaged: softens what the fire hides")
          .enabled_if(has_fire_density);
  Curve FIRE_DENSITY_CURVE =
      curve(1041, "FIRE_DENSITY_CURVE", {{0.1, 0}, {0.25, 1}, {0.3, 0}},
            "Maps the value of fire_density_channel to the density of the fire. Fire of density 0 "
            "hides nothing; without smoke in the same place it is invisible")
          .enabled_if(has_fire_density);
  Real FIRE_DENSITY = real(1182, "FIRE_DENSITY", 2, 0, kUnbounded, "1/m",
                           "How strongly fire of density 1 dims light: higher values hide more of "
                           "what is behind a flame and darken thick flames. To make fire brighter, "
                           "lower fire_exposure. At 0, only fire in smoke is visible")
                          .enabled_if(has_fire);
  Real FIRE_OCCLUSION = real(1181, "FIRE_OCCLUSION", 1, 0, kUnbounded, "",
                             "Density of fire that hides all smoke in its voxel: higher values "
                             "leave more smoke in the flames; 0: any fire hides all")
                            .enabled_if(has_smoke && has_fire);
  Real FIRE_DISPLACE = real(1390, "FIRE_DISPLACE", 0, -kUnbounded, kUnbounded, "frames",
                            "Time by which fire is moved along the velocity")
                           .enabled_if(has_fire);

  Choice<VolumeFireColorMode> FIRE_COLOR_MODE =
      cycle(
          1178, "FIRE_COLOR_MODE", OVOLUME_FIRE_COLOR_BLACKBODY,
          {{OVOLUME_FIRE_COLOR_GRADIENT, "gradient"}, {OVOLUME_FIRE_COLOR_BLACKBODY, "black_body"}},
          "Take colors from fire_gradient, or from a glowing black body")
          .enabled_if(has_fire);
  const Condition has_gradient = has_fire && is(FIRE_COLOR_MODE, OVOLUME_FIRE_COLOR_GRADIENT);
  const Condition has_body = has_fire && is(FIRE_COLOR_MODE, OVOLUME_FIRE_COLOR_BLACKBODY);
  Gradient FIRE_GRADIENT =
      gradient(1037, "FIRE_GRADIENT",
               {{{0, {0, 0, 0}}, {0.4, {1, 0.12, 0.01}}, {0.75, {1, 0.6, 0.12}}, {1, {1, 1, 0.8}}}},
               "Color of the fire in mode gradient")
          .enabled_if(has_gradient);
  Real FIRE_GRADIENT_SCALE =
      real(1042, "FIRE_GRADIENT_SCALE", 1, 0, kUnbounded, "", "Brightness of fire_gradient")
          .enabled_if(has_gradient);
  Real FIRE_TEMP_MIN = real(1234, "FIRE_TEMP_MIN", 600, 0, kUnbounded, "K",
                            "Temperature of the black body where fire_curve is just above 0")
                           .enabled_if(has_body);
  Real FIRE_TEMP_MAX = real(1127, "FIRE_TEMP_MAX", 2200, 0, kUnbounded, "K",
                            "Temperature of the black body where fire_curve is 1")
                           .enabled_if(has_body);
  Real FIRE_EXPOSURE =
      real(1299, "FIRE_EXPOSURE", 1, 0, kUnbounded, "",
           "Brightness of the black body that is shown as 1: double the value, half as bright. "
           "Adjust this first if fire is too bright or too dark")
          .enabled_if(has_body);
  Real FIRE_COMPRESSION = real(1403, "FIRE_COMPRESSION", 5, 0, kUnbounded, "",
                               "Evens out the brightness of cool and hot fire by darkening the hot "
                               "parts; 0: as in nature, where hot fire is far brighter")
                              .enabled_if(has_body);
  Real FIRE_TINT_R = real(1300, "FIRE_TINT_R", 1, 0, kUnbounded, "", "Factor for the body's red")
                         .enabled_if(has_body);
  Real FIRE_TINT_G = real(1301, "FIRE_TINT_G", 1, 0, kUnbounded, "", "Factor for the body's green")
                         .enabled_if(has_body);
  Real FIRE_TINT_B = real(1302, "FIRE_TINT_B", 1, 0, kUnbounded, "", "Factor for the body's blue")
                         .enabled_if(has_body);
  Button BAKE_FIRE =
      button(1139, "BAKE_FIRE", "Converts the colors of the black body to fire_gradient")
          .enabled_if(has_body);

  Real FIRE_NOISE_AMOUNT = real(1392, "FIRE_NOISE_AMOUNT", 0, 0, kUnbounded, "%",
                                "Strength of the detail noise in the fire; 0: none")
                               .enabled_if(has_fire);
  Real FIRE_NOISE_SCALE_A = noise_size(1393, "FIRE_NOISE_SCALE_A").enabled_if(has_fire);
  Real FIRE_NOISE_SCALE_B = noise_size(1394, "FIRE_NOISE_SCALE_B").enabled_if(has_fire);
  Real FIRE_NOISE_GAIN = noise_gain(1395, "FIRE_NOISE_GAIN").enabled_if(has_fire);
  Real FIRE_NOISE_PERIOD = noise_period(1411, "FIRE_NOISE_PERIOD").enabled_if(has_fire);
};

}  // namespace nbx
