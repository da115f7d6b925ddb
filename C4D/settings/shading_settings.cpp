#include "C4D/settings/shading_settings.h"

#include <algorithm>
#include <cmath>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/parameters/volume_shading_parameters.h"
#include "C4D/services/host_conversion.h"
#include "cache/grid_type.h"
#include "host/interface/compositing.h"
#include "render/direct_light_field.h"
#include "render/scattered_light_field.h"

namespace nbx {

namespace {

// The parameters of one shader.
struct ShaderIds {
  std::int32_t channel, blur, curve, density_channel, density_blur, density_curve, density;
  std::int32_t displace;
  std::int32_t noise_amount, noise_scale_a, noise_scale_b, noise_gain, noise_period;
};

constexpr ShaderIds kSmoke{
    OVOLUME_SMOKE_CHANNEL,         OVOLUME_SMOKE_BLUR,          OVOLUME_SMOKE_CURVE,
    OVOLUME_SMOKE_DENSITY_CHANNEL, OVOLUME_SMOKE_DENSITY_BLUR,  OVOLUME_SMOKE_DENSITY_CURVE,
    OVOLUME_SMOKE_DENSITY,         OVOLUME_SMOKE_DISPLACE,      OVOLUME_SMOKE_NOISE_AMOUNT,
    OVOLUME_SMOKE_NOISE_SCALE_A,   OVOLUME_SMOKE_NOISE_SCALE_B, OVOLUME_SMOKE_NOISE_GAIN,
    OVOLUME_SMOKE_NOISE_PERIOD};
constexpr ShaderIds kFire{
    OVOLUME_FIRE_CHANNEL,         OVOLUME_FIRE_BLUR,          OVOLUME_FIRE_CURVE,
    OVOLUME_FIRE_DENSITY_CHANNEL, OVOLUME_FIRE_DENSITY_BLUR,  OVOLUME_FIRE_DENSITY_CURVE,
    OVOLUME_FIRE_DENSITY,         OVOLUME_FIRE_DISPLACE,      OVOLUME_FIRE_NOISE_AMOUNT,
    OVOLUME_FIRE_NOISE_SCALE_A,   OVOLUME_FIRE_NOISE_SCALE_B, OVOLUME_FIRE_NOISE_GAIN,
    OVOLUME_FIRE_NOISE_PERIOD};

int channel_of(std::int32_t choice) {
  switch (choice) {
    case OVOLUME_CHANNEL_DENSITY:
      return kGridDensity;
    case OVOLUME_CHANNEL_TEMPERATURE:
      return kGridTemperature;
    case OVOLUME_CHANNEL_FUEL:
      return kGridFuel;
    case OVOLUME_CHANNEL_BURN:
      return kGridBurn;
    case OVOLUME_CHANNEL_RAMP_X:
      return kRampX;
    case OVOLUME_CHANNEL_RAMP_Y:
      return kRampY;
    case OVOLUME_CHANNEL_RAMP_Z:
      return kRampZ;
    default:
      return kNoGrid;
  }
}

ShaderParams shader_params(const ParameterReader& data, const ShaderIds& id) {
  ShaderParams shader;
  shader.channel = channel_of(data.whole(id.channel));
  shader.blur = data.real(id.blur);
  shader.curve = to_spline(data.curve(id.curve));
  shader.density_channel = channel_of(data.whole(id.density_channel));
  shader.density_blur = data.real(id.density_blur);
  shader.density_curve = to_spline(data.curve(id.density_curve));
  shader.density = data.real(id.density);
  shader.displace = data.real(id.displace);
  shader.noise.percent = data.real(id.noise_amount);
  shader.noise.scale_a = data.real(id.noise_scale_a);
  shader.noise.scale_b = data.real(id.noise_scale_b);
  shader.noise.gain = data.real(id.noise_gain);
  shader.noise.period = data.real(id.noise_period);
  return shader;
}

std::shared_ptr<const ColorRamp> gradient_ramp(const host::Gradient& gradient, double scale) {
  using Interpolation = GradientKnot::Interpolation;
  std::vector<GradientKnot> knots;
  for (const host::GradientKnot& knot : gradient.knots) {
    Interpolation interpolation = Interpolation::kLinear;
    if (knot.mode == host::GradientMode::Smooth) interpolation = Interpolation::kSmooth;
    if (knot.mode == host::GradientMode::Step) interpolation = Interpolation::kStep;
    knots.push_back({static_cast<float>(knot.position), to_color(knot.color), interpolation});
  }
  return std::make_shared<GradientRamp>(std::move(knots), scale);
}

std::shared_ptr<const ColorRamp> fire_ramp(const host::BaseObject& volume) {
  const ParameterReader data(volume);
  if (data.whole(OVOLUME_FIRE_COLOR_MODE) == OVOLUME_FIRE_COLOR_GRADIENT)
    return gradient_ramp(data.gradient(OVOLUME_FIRE_GRADIENT),
                         data.real(OVOLUME_FIRE_GRADIENT_SCALE));
  return std::make_shared<BlackbodyRamp>(blackbody_params(volume));
}

Filter filter_of(std::int32_t choice) {
  if (choice == OVOLUME_FILTER_LINEAR) return Filter::kLinear;
  if (choice == OVOLUME_FILTER_CATMULL_ROM) return Filter::kCatmullRom;
  return Filter::kBSpline;
}

}  // namespace

BlackbodyParams blackbody_params(const host::BaseObject& volume) {
  const ParameterReader data(volume);
  BlackbodyParams body;
  body.min_kelvin = data.real(OVOLUME_FIRE_TEMP_MIN);
  body.max_kelvin = data.real(OVOLUME_FIRE_TEMP_MAX);
  body.exposure = data.real(OVOLUME_FIRE_EXPOSURE);
  body.compression = data.real(OVOLUME_FIRE_COMPRESSION);
  body.tint = to_color({data.real(OVOLUME_FIRE_TINT_R), data.real(OVOLUME_FIRE_TINT_G),
                        data.real(OVOLUME_FIRE_TINT_B)});
  return body;
}

VolumeParams shading_params(const host::BaseObject& volume) {
  const ParameterReader data(volume);
  VolumeParams params;
  params.smoke = shader_params(data, kSmoke);
  params.smoke.ramp = gradient_ramp(data.gradient(OVOLUME_SMOKE_GRADIENT), 1);
  params.fire = shader_params(data, kFire);
  params.fire.ramp = fire_ramp(volume);
  params.albedo = data.real(OVOLUME_SMOKE_ALBEDO);
  params.occlusion = data.real(OVOLUME_FIRE_OCCLUSION);
  params.filter = filter_of(data.whole(OVOLUME_FILTER));
  params.viewStep = data.real(OVOLUME_VIEW_STEP);
  params.shadowStep = data.real(OVOLUME_SHADOW_STEP);
  params.motion_blur = data.real(OVOLUME_MOTION_BLUR);
  params.motion_blur_step = data.real(OVOLUME_MOTION_BLUR_STEP);
  if (data.flag(OVOLUME_DEPTH_FADE))
    params.depth_fade = to_spline(data.curve(OVOLUME_DEPTH_FADE_CURVE));
  return params;
}

std::shared_ptr<LightField> make_light_field(const host::BaseObject& volume, const Vec3d& eye) {
  const ParameterReader data(volume);
  const std::int32_t mode = data.whole(OVOLUME_LIGHT_MODE);
  if (mode < OVOLUME_LIGHT_LINEAR || mode > OVOLUME_LIGHT_EXACT) return nullptr;
  const double scale = std::max(data.real(OVOLUME_LIGHT_GRID_SCALE), 0.001);
  if (data.flag(OVOLUME_MULTI_SCATTER)) {
    ScatteredLightParams params;
    params.cubic = mode == OVOLUME_LIGHT_CUBIC;
    params.gridScale = scale;
    params.maxSweeps = std::max(data.whole(OVOLUME_SCATTER_SWEEPS), 1);
    params.directions = std::max(data.whole(OVOLUME_SCATTER_DIRECTIONS), 1);
    params.directWeight = static_cast<float>(data.real(OVOLUME_SCATTER_DIRECT));
    params.emissionWeight = static_cast<float>(data.real(OVOLUME_SCATTER_EMISSION));
    params.extinctionScale = static_cast<float>(data.real(OVOLUME_SCATTER_EXTINCTION));
    return std::make_shared<ScatteredLightField>(params);
  }
  DirectLightParams params;
  params.mode = static_cast<LightCache>(mode - OVOLUME_LIGHT_LINEAR + 1);
  params.gridScale = scale;
  params.anisotropy = std::clamp(data.real(OVOLUME_PHASE_G), -0.9999, 0.9999);
  params.eye = eye;
  return std::make_shared<DirectLightField>(params);
}

void read_compositing(RenderVolume& target, const host::BaseObject& volume) {
  target.excludeMask = target.innerExcludeMask = 0;
  target.matte = false;
  const host::BaseTag* tag = host::CompositingTag(volume);
  if (!tag) return;
  const ParameterReader data(*tag);
  const struct {
    std::int32_t parameter;
    std::uint32_t rays;
  } excluded[] = {
      {host::COMPOSITING_SEEN_BY_CAMERA, kCameraRay},
      {host::COMPOSITING_SEEN_BY_RAYS,
       kReflectionRay | kRefractionRay | kIndirectRay | kOcclusionRay},
      {host::COMPOSITING_SEEN_BY_GI, kIndirectRay},
      {host::COMPOSITING_SEEN_BY_TRANSPARENCY, kTransparencyRay},
      {host::COMPOSITING_SEEN_BY_REFRACTION, kRefractionRay},
      {host::COMPOSITING_SEEN_BY_REFLECTION, kReflectionRay},
      {host::COMPOSITING_SEEN_BY_AO, kOcclusionRay},
  };
  for (const auto& [parameter, rays] : excluded)
    if (!data.flag(parameter)) target.excludeMask |= rays;
  target.innerExcludeMask = target.excludeMask;
  if (!data.flag(host::COMPOSITING_SELF_SHADOW)) target.innerExcludeMask |= kShadowRay;
  if (!data.flag(host::COMPOSITING_CAST_SHADOWS)) target.excludeMask |= kShadowRay;
  target.matte = data.flag(host::COMPOSITING_MATTE);
  target.matteColor = to_color(data.vector(host::COMPOSITING_MATTE_COLOR));
}

}  // namespace nbx
