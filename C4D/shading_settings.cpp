#include "C4D/shading_settings.h"

#include <algorithm>
#include <cmath>

#include "C4D/host_conversion.h"
#include "C4D/volume_parameters.h"
#include "C4D/volume_shading_parameters.h"
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

ShaderParams shader_params(const host::BaseContainer& data, const ShaderIds& id) {
  ShaderParams shader;
  shader.channel = channel_of(data.GetLong(id.channel, OVOLUME_CHANNEL_NONE));
  shader.blur = data.GetReal(id.blur);
  shader.curve = to_spline(data.GetCurve(id.curve));
  shader.densityChannel = channel_of(data.GetLong(id.density_channel, OVOLUME_CHANNEL_NONE));
  shader.densityBlur = data.GetReal(id.density_blur);
  shader.densityCurve = to_spline(data.GetCurve(id.density_curve));
  shader.density = data.GetReal(id.density);
  shader.displace = data.GetReal(id.displace);
  shader.noise.percent = data.GetReal(id.noise_amount);
  shader.noise.scaleA = data.GetReal(id.noise_scale_a, 1);
  shader.noise.scaleB = data.GetReal(id.noise_scale_b, 1);
  shader.noise.gain = data.GetReal(id.noise_gain, 0.56);
  shader.noise.period = data.GetTime(id.noise_period, {1, 1}).Get();
  return shader;
}

Color to_color(const host::Vector& v) {
  return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
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

std::shared_ptr<const ColorRamp> fire_ramp(const host::BaseContainer& data) {
  if (data.GetLong(OVOLUME_FIRE_COLOR_MODE, OVOLUME_FIRE_COLOR_BLACKBODY) ==
      OVOLUME_FIRE_COLOR_GRADIENT)
    return gradient_ramp(data.GetGradient(OVOLUME_FIRE_GRADIENT),
                         data.GetReal(OVOLUME_FIRE_GRADIENT_SCALE, 1));
  return std::make_shared<BlackbodyRamp>(blackbody_params(data));
}

Filter filter_of(std::int32_t choice) {
  if (choice == OVOLUME_FILTER_LINEAR) return Filter::kLinear;
  if (choice == OVOLUME_FILTER_CATMULL_ROM) return Filter::kCatmullRom;
  return Filter::kBSpline;
}

}  // namespace

BlackbodyParams blackbody_params(const host::BaseContainer& data) {
  BlackbodyParams body;
  body.minKelvin = data.GetReal(OVOLUME_FIRE_TEMP_MIN, 600);
  body.maxKelvin = data.GetReal(OVOLUME_FIRE_TEMP_MAX, 2200);
  body.exposure = data.GetReal(OVOLUME_FIRE_EXPOSURE, 1);
  body.compression = data.GetReal(OVOLUME_FIRE_COMPRESSION, 5);
  body.tint = to_color({data.GetReal(OVOLUME_FIRE_TINT_R, 1), data.GetReal(OVOLUME_FIRE_TINT_G, 1),
                        data.GetReal(OVOLUME_FIRE_TINT_B, 1)});
  return body;
}

VolumeParams shading_params(const host::BaseObject& volume) {
  const host::BaseContainer& data = volume.GetDataInstance();
  VolumeParams params;
  params.smoke = shader_params(data, kSmoke);
  params.smoke.ramp = gradient_ramp(data.GetGradient(OVOLUME_SMOKE_GRADIENT), 1);
  params.fire = shader_params(data, kFire);
  params.fire.ramp = fire_ramp(data);
  params.albedo = data.GetReal(OVOLUME_SMOKE_ALBEDO, 1);
  params.occlusion = data.GetReal(OVOLUME_FIRE_OCCLUSION, 1);
  params.filter = filter_of(data.GetLong(OVOLUME_FILTER, OVOLUME_FILTER_BSPLINE));
  params.viewStep = data.GetReal(OVOLUME_VIEW_STEP, 0.25);
  params.shadowStep = data.GetReal(OVOLUME_SHADOW_STEP, 0.5);
  params.motionBlur = data.GetReal(OVOLUME_MOTION_BLUR);
  params.motionBlurStep = data.GetReal(OVOLUME_MOTION_BLUR_STEP, 1);
  if (data.GetBool(OVOLUME_DEPTH_FADE) && data.Find(OVOLUME_DEPTH_FADE_CURVE))
    params.depthFade = to_spline(data.GetCurve(OVOLUME_DEPTH_FADE_CURVE));
  return params;
}

std::shared_ptr<LightField> make_light_field(const host::BaseObject& volume, const Vec3d& eye) {
  const host::BaseContainer& data = volume.GetDataInstance();
  const std::int32_t mode = data.GetLong(OVOLUME_LIGHT_MODE, OVOLUME_LIGHT_LINEAR);
  if (mode < OVOLUME_LIGHT_LINEAR || mode > OVOLUME_LIGHT_EXACT) return nullptr;
  const double scale = std::max(data.GetReal(OVOLUME_LIGHT_GRID_SCALE, 1), 0.001);
  if (data.GetBool(OVOLUME_MULTI_SCATTER)) {
    ScatteredLightParams params;
    params.cubic = mode == OVOLUME_LIGHT_CUBIC;
    params.gridScale = scale;
    params.maxSweeps = std::max(data.GetLong(OVOLUME_SCATTER_SWEEPS, 1), 1);
    params.directions = std::max(data.GetLong(OVOLUME_SCATTER_DIRECTIONS, 3), 1);
    params.directWeight = static_cast<float>(data.GetReal(OVOLUME_SCATTER_DIRECT, 1));
    params.emissionWeight = static_cast<float>(data.GetReal(OVOLUME_SCATTER_EMISSION, 1));
    params.extinctionScale = static_cast<float>(data.GetReal(OVOLUME_SCATTER_EXTINCTION, 1));
    return std::make_shared<ScatteredLightField>(params);
  }
  DirectLightParams params;
  params.mode = static_cast<LightCache>(mode - OVOLUME_LIGHT_LINEAR + 1);
  params.gridScale = scale;
  params.anisotropy = std::clamp(data.GetReal(OVOLUME_PHASE_G), -0.9999, 0.9999);
  params.eye = eye;
  return std::make_shared<DirectLightField>(params);
}

void read_compositing(RenderVolume& target, const host::BaseObject& volume) {
  target.excludeMask = target.innerExcludeMask = 0;
  target.matte = false;
  const host::BaseTag* tag = host::CompositingTag(volume);
  if (!tag) return;
  const host::BaseContainer& data = tag->GetDataInstance();
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
    if (!data.GetBool(parameter, true)) target.excludeMask |= rays;
  target.innerExcludeMask = target.excludeMask;
  if (!data.GetBool(host::COMPOSITING_SELF_SHADOW, true)) target.innerExcludeMask |= kShadowRay;
  if (!data.GetBool(host::COMPOSITING_CAST_SHADOWS, true)) target.excludeMask |= kShadowRay;
  target.matte = data.GetBool(host::COMPOSITING_MATTE);
  target.matteColor = to_color(data.GetVector(host::COMPOSITING_MATTE_COLOR));
}

}  // namespace nbx
