#include "C4D/settings/shading_settings.h"

#include <algorithm>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/channel_choice.h"
#include "host/interface/compositing.h"
#include "render/direct_light_field.h"
#include "render/scattered_light_field.h"

namespace nbx {

namespace {

enum class Shader { kSmoke, kFire };

ShaderParams shader_params(const ParameterReader& p, Shader which) {
  const auto read = [&](const auto& smoke, const auto& fire) {
    return p(which == Shader::kSmoke ? smoke : fire);
  };
  ShaderParams shader;
  shader.channel = shader_channel(read(OVOLUME.SMOKE_CHANNEL, OVOLUME.FIRE_CHANNEL));
  shader.blur = read(OVOLUME.SMOKE_BLUR, OVOLUME.FIRE_BLUR);
  shader.curve = to_spline(read(OVOLUME.SMOKE_CURVE, OVOLUME.FIRE_CURVE));
  shader.density_channel =
      shader_channel(read(OVOLUME.SMOKE_DENSITY_CHANNEL, OVOLUME.FIRE_DENSITY_CHANNEL));
  shader.density_blur = read(OVOLUME.SMOKE_DENSITY_BLUR, OVOLUME.FIRE_DENSITY_BLUR);
  shader.density_curve = to_spline(read(OVOLUME.SMOKE_DENSITY_CURVE, OVOLUME.FIRE_DENSITY_CURVE));
  shader.density = read(OVOLUME.SMOKE_DENSITY, OVOLUME.FIRE_DENSITY);
  shader.displace = read(OVOLUME.SMOKE_DISPLACE, OVOLUME.FIRE_DISPLACE);
  shader.noise.percent = read(OVOLUME.SMOKE_NOISE_AMOUNT, OVOLUME.FIRE_NOISE_AMOUNT);
  shader.noise.scale_a = read(OVOLUME.SMOKE_NOISE_SCALE_A, OVOLUME.FIRE_NOISE_SCALE_A);
  shader.noise.scale_b = read(OVOLUME.SMOKE_NOISE_SCALE_B, OVOLUME.FIRE_NOISE_SCALE_B);
  shader.noise.gain = read(OVOLUME.SMOKE_NOISE_GAIN, OVOLUME.FIRE_NOISE_GAIN);
  shader.noise.period = read(OVOLUME.SMOKE_NOISE_PERIOD, OVOLUME.FIRE_NOISE_PERIOD);
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
  const ParameterReader p(volume);
  if (p(OVOLUME.FIRE_COLOR_MODE) == OVOLUME_FIRE_COLOR_GRADIENT)
    return gradient_ramp(p(OVOLUME.FIRE_GRADIENT), p(OVOLUME.FIRE_GRADIENT_SCALE));
  return std::make_shared<BlackbodyRamp>(blackbody_params(volume));
}

Filter filter_of(VolumeFilter choice) {
  if (choice == OVOLUME_FILTER_LINEAR) return Filter::kLinear;
  if (choice == OVOLUME_FILTER_CATMULL_ROM) return Filter::kCatmullRom;
  return Filter::kBSpline;
}

}  // namespace

BlackbodyParams blackbody_params(const host::BaseObject& volume) {
  const ParameterReader p(volume);
  BlackbodyParams body;
  body.min_kelvin = p(OVOLUME.FIRE_TEMP_MIN);
  body.max_kelvin = p(OVOLUME.FIRE_TEMP_MAX);
  body.exposure = p(OVOLUME.FIRE_EXPOSURE);
  body.compression = p(OVOLUME.FIRE_COMPRESSION);
  body.tint = to_color({p(OVOLUME.FIRE_TINT_R), p(OVOLUME.FIRE_TINT_G), p(OVOLUME.FIRE_TINT_B)});
  return body;
}

VolumeParams shading_params(const host::BaseObject& volume) {
  const ParameterReader p(volume);
  VolumeParams params;
  params.smoke = shader_params(p, Shader::kSmoke);
  params.smoke.ramp = gradient_ramp(p(OVOLUME.SMOKE_GRADIENT), 1);
  params.fire = shader_params(p, Shader::kFire);
  params.fire.ramp = fire_ramp(volume);
  params.albedo = p(OVOLUME.SMOKE_ALBEDO);
  params.occlusion = p(OVOLUME.FIRE_OCCLUSION);
  params.filter = filter_of(p(OVOLUME.FILTER));
  params.viewStep = p(OVOLUME.VIEW_STEP);
  params.shadowStep = p(OVOLUME.SHADOW_STEP);
  params.motion_blur = p(OVOLUME.MOTION_BLUR);
  params.motion_blur_step = p(OVOLUME.MOTION_BLUR_STEP);
  if (p(OVOLUME.DEPTH_FADE)) params.depth_fade = to_spline(p(OVOLUME.DEPTH_FADE_CURVE));
  return params;
}

std::shared_ptr<LightField> make_light_field(const host::BaseObject& volume, const Vec3d& eye) {
  const ParameterReader p(volume);
  const VolumeLightMode mode = p(OVOLUME.LIGHT_MODE);
  if (mode < OVOLUME_LIGHT_LINEAR || mode > OVOLUME_LIGHT_EXACT) return nullptr;
  const double scale = std::max(p(OVOLUME.LIGHT_GRID_SCALE), 0.001);
  if (p(OVOLUME.MULTI_SCATTER)) {
    ScatteredLightParams params;
    params.cubic = mode == OVOLUME_LIGHT_CUBIC;
    params.gridScale = scale;
    params.maxSweeps = std::max(p(OVOLUME.SCATTER_SWEEPS), 1);
    params.directions = std::max(p(OVOLUME.SCATTER_DIRECTIONS), 1);
    params.directWeight = static_cast<float>(p(OVOLUME.SCATTER_DIRECT));
    params.emissionWeight = static_cast<float>(p(OVOLUME.SCATTER_EMISSION));
    params.extinctionScale = static_cast<float>(p(OVOLUME.SCATTER_EXTINCTION));
    return std::make_shared<ScatteredLightField>(params);
  }
  DirectLightParams params;
  params.mode = static_cast<LightCache>(mode - OVOLUME_LIGHT_LINEAR + 1);
  params.gridScale = scale;
  params.anisotropy = std::clamp(p(OVOLUME.PHASE_G), -0.9999, 0.9999);
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
    if (!data.GetBool(parameter)) target.excludeMask |= rays;
  target.innerExcludeMask = target.excludeMask;
  if (!data.GetBool(host::COMPOSITING_SELF_SHADOW)) target.innerExcludeMask |= kShadowRay;
  if (!data.GetBool(host::COMPOSITING_CAST_SHADOWS)) target.excludeMask |= kShadowRay;
  target.matte = data.GetBool(host::COMPOSITING_MATTE);
  target.matteColor = to_color(data.GetVector(host::COMPOSITING_MATTE_COLOR));
}

}  // namespace nbx
