#include "render/prepare_volume.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "cache/grid_type.h"
#include "math/field_operators.h"
#include "render/proximity.h"
#include "simulation/vorticity.h"

namespace nbx {

namespace {

constexpr double kLeast = std::numeric_limits<double>::epsilon();
constexpr double kMetresPerUnit = 0.01;

// Grids of coordinates that travelled with the gas.
constexpr int kCoordinateGrids[4] = {8, 9, 27, 32};

// Voxels per object unit.
double cells_per_unit(const VolumeParams& params) {
  const double g = length(params.objectToCell.rows[0]);
  return g > 0 ? g : kLeast;
}

RationalSpline baked(RationalSpline curve) {
  curve.rebuild();
  return curve;
}

void prepare_shader(VolumeShader& shader, SimFrame& frame, const ShaderParams& shaderParams,
                    const VolumeParams& params) {
  const double g = cells_per_unit(params);
  shader.on = shader.colorSampler.bind(frame, shaderParams.channel, params.filter);
  shader.densitySampler.bind(frame, shaderParams.densityChannel, params.filter);
  shader.ramp = shaderParams.ramp;
  if (!shader.on) return;
  shader.colorSampler.blur(shaderParams.blur * g);
  shader.densitySampler.blur(shaderParams.densityBlur * g);
  shader.colorCurve = baked(shaderParams.curve);
  shader.densityCurve = baked(shaderParams.densityCurve);
  shader.densityScale = shaderParams.density;
  const double fps = params.framesPerSecond > 0 ? params.framesPerSecond : 1;
  shader.displace = shaderParams.displace / fps;
  set_detail_noise(shader.noise, shaderParams.noise, 1 / g, params.seconds);
}

// |curl u| of the flow, at most the frame rate and 0 in the outermost layer: noise appears where
// the flow turns, and dies out where it doesn't.
FieldHandle vorticity_mask(const RenderVolume& volume, double dx, double framesPerSecond) {
  const Field<float>&U = *volume.velU, &V = *volume.velV, &W = *volume.velW;
  const Vec3i n(V.nx(), U.ny(), U.nz());
  const FieldHandle mask = acquire_field(n), wx = acquire_field(n), wy = acquire_field(n),
                    wz = acquire_field(n);
  VelocityCurl(*wx, *wy, *wz, *mask, U, V, W, static_cast<float>(dx));
  min_a_x(*mask, static_cast<float>(framesPerSecond), *mask);
  for (int k = 0; k < n[2]; ++k)
    for (int j = 0; j < n[1]; ++j) {
      const bool outer = k == 0 || j == 0 || k == n[2] - 1 || j == n[1] - 1;
      float* row = &(*mask)(0, j, k);
      if (outer) std::fill_n(row, n[0], 0.0f);
      row[0] = row[n[0] - 1] = 0;
    }
  return mask;
}

// The three components, if they are there and fit each other.
void bind_velocity(RenderVolume& volume, SimFrame& frame) {
  volume.velU = frame.grid(kGridVelocityX);
  volume.velV = frame.grid(kGridVelocityY);
  volume.velW = frame.grid(kGridVelocityZ);
  if (volume.hasVelocity()) {
    const Vec3i n(volume.velV->nx(), volume.velU->ny(), volume.velU->nz());
    if (std::min({n[0], n[1], n[2]}) >= 2 && volume.velU->dims() == n + Vec3i(1, 0, 0) &&
        volume.velV->dims() == n + Vec3i(0, 1, 0) && volume.velW->dims() == n + Vec3i(0, 0, 1))
      return;
  }
  volume.velU = volume.velV = volume.velW = nullptr;
}

}  // namespace

void prepareFields(RenderVolume& volume, SimFrame& frame, const VolumeParams& params) {
  volume.dims = frame.dims();
  volume.gridOffset = frame.offset();
  volume.voxelBoxMin = {0, 0, 0};
  volume.voxelBoxMax = vector_cast<double>(volume.dims - Vec3i(1, 1, 1));

  const double g = cells_per_unit(params);
  const auto& rows = params.worldToObject.rows;
  const double s = length(Vec3d(rows[0][0], rows[1][0], rows[2][0]));  // 1 over the object's scale
  volume.metresPerUnit = kMetresPerUnit;
  volume.voxelLength = 1 / g / (s > 0 ? s : kLeast);
  // A step of the object's scale counts as one of the unscaled object, so that its opacity stays.
  volume.sigmaScale = s * kMetresPerUnit;
  volume.metresPerVoxel = kMetresPerUnit / g;
  volume.voxelsPerMetre = 1 / volume.metresPerVoxel;
  for (VolumeShader* shader : {&volume.smoke, &volume.fire}) {
    shader->displace /= volume.metresPerVoxel;
    shader->on = shader->on && shader->colorSampler && shader->ramp;
  }
  volume.worldToVoxel = params.objectToCell * params.worldToObject;
  volume.voxelToWorld = inverse(volume.worldToVoxel);

  volume.vorticityMask = nullptr;
  volume.advectedCoords = {};
  bind_velocity(volume, frame);
  build_proximity(volume);
  const bool noise =
      (volume.smoke.on && volume.smoke.noise.on()) || (volume.fire.on && volume.fire.noise.on());
  if (!noise) return;
  if (volume.hasVelocity())
    volume.vorticityMask = vorticity_mask(volume, volume.metresPerVoxel, params.framesPerSecond);
  FieldHandle* const coords[] = {&volume.advectedCoords.x, &volume.advectedCoords.y,
                                 &volume.advectedCoords.z, &volume.advectedCoords.age};
  for (int n = 0; n < 4; ++n) {
    *coords[n] = frame.grid(kCoordinateGrids[n]);
    if (*coords[n] && std::min({(*coords[n])->nx(), (*coords[n])->ny(), (*coords[n])->nz()}) < 2)
      *coords[n] = nullptr;
  }
}

void prepare_volume(RenderVolume& volume, SimFrame& frame, const VolumeParams& params) {
  volume.releaseFrame();
  volume.smoke.on = volume.fire.on = false;
  const Vec3i dims = frame.dims();
  if (std::min({dims[0], dims[1], dims[2]}) < 3) return;

  prepare_shader(volume.smoke, frame, params.smoke, params);
  prepare_shader(volume.fire, frame, params.fire, params);
  volume.smokeColorScale = params.smoke.density * std::max(params.albedo, 0.0);
  volume.fireMaskScale = 1 / std::max(params.occlusion, kLeast);
  if (!volume.shows()) return;

  volume.viewStep = std::clamp(params.viewStep, 0.001, 1.0);
  volume.shadowStep = std::clamp(params.shadowStep, 0.001, 1.0);
  volume.blurTime = frame.simTime.length.value() * std::max(params.motionBlur, 0.0);
  volume.blurStep = std::max(params.motionBlurStep, 0.001);
  volume.depthFade.reset();
  if (params.depthFade) volume.depthFade = baked(*params.depthFade);
  prepareFields(volume, frame, params);
  volume.ready = volume.shows();
}

}  // namespace nbx
