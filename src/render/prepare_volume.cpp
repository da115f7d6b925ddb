#include "render/prepare_volume.h"

#include <algorithm>
#include <limits>

#include "cache/grid_type.h"
#include "math/field_operators.h"
#include "render/proximity.h"
#include "simulation/vorticity.h"
#include "util/units.h"

namespace nbx {

namespace {

constexpr double kLeast = std::numeric_limits<double>::epsilon();

// Grids of coordinates that traveled with the gas.
constexpr int kCoordinateGrids[4] = {kGridCoordinateX, kGridCoordinateY, kGridCoordinateZ,
                                     kGridCoordinateAge};

// Voxels per object unit.
double cells_per_unit(const VolumeParams& params) {
  const double g = length(params.object_to_cell.rows[0]);
  return g > 0 ? g : kLeast;
}

RationalSpline baked(RationalSpline curve) {
  curve.rebuild();
  return curve;
}

void prepare_shader(VolumeShader& shader, SimFrame& frame, const ShaderParams& shader_params,
                    const VolumeParams& params) {
  const double g = cells_per_unit(params);
  shader.on = shader.color_sampler.bind(frame, shader_params.channel, params.filter);
  shader.density_sampler.bind(frame, shader_params.density_channel, params.filter);
  shader.ramp = shader_params.ramp;
  if (!shader.on) return;
  shader.color_sampler.blur(shader_params.blur * g);
  shader.density_sampler.blur(shader_params.density_blur * g);
  shader.color_curve = baked(shader_params.curve);
  shader.density_curve = baked(shader_params.density_curve);
  shader.density_scale = shader_params.density;
  const double fps = params.frames_per_second > 0 ? params.frames_per_second : 1;
  shader.displace = shader_params.displace / fps;
  set_detail_noise(shader.noise, shader_params.noise, 1 / g, params.seconds);
}

// |curl u| of the flow, at most the frame rate and 0 in the outermost layer. With it noise appears
// where the flow turns and disappears where it doesn't.
FieldHandle vorticity_mask(const RenderVolume& volume, double dx, double frames_per_second) {
  const Field<float>&U = *volume.velU, &V = *volume.velV, &W = *volume.velW;
  const Vec3i n(V.nx(), U.ny(), U.nz());
  FieldHandle mask = acquire_field(n), wx = acquire_field(n), wy = acquire_field(n),
              wz = acquire_field(n);
  VelocityCurl(*wx, *wy, *wz, *mask, U, V, W, dx);
  min_a_x(*mask, frames_per_second, *mask);
  for (int k = 0; k < n[2]; ++k)
    for (int j = 0; j < n[1]; ++j) {
      const bool outer = k == 0 || j == 0 || k == n[2] - 1 || j == n[1] - 1;
      float* row = &(*mask)(0, j, k);
      if (outer) std::fill_n(row, n[0], 0.0f);
      row[0] = row[n[0] - 1] = 0;
    }
  return mask;
}

// Binds the three components if all exist and have matching dimensions.
void bind_velocity(RenderVolume& volume, SimFrame& frame) {
  volume.velU = frame.grid(kGridVelocityX);
  volume.velV = frame.grid(kGridVelocityY);
  volume.velW = frame.grid(kGridVelocityZ);
  if (volume.has_velocity()) {
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
  const auto& rows = params.world_to_object.rows;
  const double s = length(Vec3d(rows[0][0], rows[1][0], rows[2][0]));  // 1 over the object's scale
  volume.metresPerUnit = kMetersPerUnit;
  volume.voxelLength = 1 / g / (s > 0 ? s : kLeast);
  // Lengths count as in the unscaled object, so scaling an object keeps its opacity.
  volume.sigmaScale = s * kMetersPerUnit;
  volume.metresPerVoxel = kMetersPerUnit / g;
  volume.voxelsPerMetre = 1 / volume.metresPerVoxel;
  for (VolumeShader* shader : {&volume.smoke, &volume.fire}) {
    shader->displace /= volume.metresPerVoxel;
    shader->on = shader->on && shader->color_sampler && shader->ramp;
  }
  volume.worldToVoxel = params.object_to_cell * params.world_to_object;
  volume.voxelToWorld = inverse(volume.worldToVoxel);

  volume.vorticityMask = nullptr;
  volume.advectedCoords = {};
  bind_velocity(volume, frame);
  build_proximity(volume);
  const bool noise =
      (volume.smoke.on && volume.smoke.noise.on()) || (volume.fire.on && volume.fire.noise.on());
  if (!noise) return;
  if (volume.has_velocity())
    volume.vorticityMask = vorticity_mask(volume, volume.metresPerVoxel, params.frames_per_second);
  FieldHandle* const coords[] = {&volume.advectedCoords.x, &volume.advectedCoords.y,
                                 &volume.advectedCoords.z, &volume.advectedCoords.age};
  for (int n = 0; n < 4; ++n) {
    *coords[n] = frame.grid(kCoordinateGrids[n]);
    if (*coords[n] && std::min({(*coords[n])->nx(), (*coords[n])->ny(), (*coords[n])->nz()}) < 2)
      *coords[n] = nullptr;
  }
}

void prepare_volume(RenderVolume& volume, SimFrame& frame, const VolumeParams& params) {
  volume.release_frame();
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
  volume.blurTime = frame.simTime.length.value() * std::max(params.motion_blur, 0.0);
  volume.blurStep = std::max(params.motion_blur_step, 0.001);
  volume.depth_fade.reset();
  if (params.depth_fade) volume.depth_fade = baked(*params.depth_fade);
  prepareFields(volume, frame, params);
  volume.ready = volume.shows();
}

}  // namespace nbx
