// Frames and volumes for tests of the renderer.
#pragma once

#include <functional>

#include "cache/grid_type.h"
#include "render/prepare_volume.h"
#include "render/volume_renderer.h"
#include "support/support.h"

namespace nbx::test {

inline RationalSpline line_curve(float slope = 1) {
  RationalSpline curve;
  curve.addPoint(0, 0, kLinearTangent, kLinearTangent);
  curve.addPoint(10, 10 * slope, kLinearTangent, kLinearTangent);
  return curve;
}

inline std::shared_ptr<const ColorRamp> plain_ramp(Color color) {
  return std::make_shared<GradientRamp>(std::vector<GradientKnot>{{0, color}});
}

using Value = std::function<float(int i, int j, int k)>;

inline void add_grid(SimFrame& frame, int type, Vec3i dims, const Value& value) {
  const FieldHandle field = acquire_field(dims);
  each_cell(dims, 0, [&](int i, int j, int k) { (*field)(i, j, k) = value(i, j, k); });
  frame.add(field, type, {0, 0, 0}, {});
}

/// A frame with density alone.
struct DensityFrame : SimFrame {
  DensityFrame(const Vec3i& dims, const Value& value) {
    add_grid(*this, kGridDensity, dims, value);
  }
};

/// Bright red smoke from the density grid. A voxel is 2 units long.
inline VolumeParams smoke_params(double scale = 1) {
  VolumeParams params;
  params.smoke.channel = kGridDensity;
  params.smoke.curve = params.fire.curve = line_curve();
  params.smoke.ramp = params.fire.ramp = plain_ramp({1, 0.5f, 0.25f});
  params.smoke.density = 3;
  params.filter = Filter::kLinear;
  params.object_to_cell = params.world_to_object = Affine3d::identity();
  for (int a = 0; a < 3; ++a) {
    params.object_to_cell.rows[a][a] = 0.5;
    params.world_to_object.rows[a][a] = 1 / scale;
  }
  return params;
}

inline std::shared_ptr<RenderVolume> make_volume(SimFrame& frame, const VolumeParams& params) {
  auto volume = std::make_shared<RenderVolume>();
  prepare_volume(*volume, frame, params);
  return volume;
}

inline VolumeRenderer renderer_of(SimFrame& frame, const VolumeParams& params,
                                  bool adaptive = true) {
  VolumeRenderer renderer;
  renderer.adaptive = adaptive;
  renderer.volumes = {make_volume(frame, params)};
  return renderer;
}

inline Points points_at(std::initializer_list<Vec3f> list) {
  Points points;
  for (const Vec3f& p : list) {
    points.x[points.n] = p[0];
    points.y[points.n] = p[1];
    points.z[points.n] = p[2];
    points.t[points.n++] = 0;
  }
  return points;
}

/// Velocity on the faces of a grid. v returns the component of an axis on a face at height j.
inline void add_velocity(SimFrame& frame, const Vec3i& dims,
                         const std::function<float(int axis, int j)>& v) {
  for (const int axis : {0, 1, 2}) {
    Vec3i faces = dims;
    ++faces[axis];
    add_grid(frame, kGridVelocityX + axis, faces, [&](int, int j, int) { return v(axis, j); });
  }
}

/// A ray through voxel coordinates of a volume; t is in world units.
inline RayRecord make_ray(const RenderVolume& volume, Vec3d from, Vec3d to, std::uint64_t seed) {
  RayRecord ray;
  ray.origin = volume.voxelToWorld(from);
  ray.direction = normalized(volume.voxelToWorld(to) - ray.origin);
  ray.mask = kCameraRay;
  ray.seed = seed;
  return ray;
}

}  // namespace nbx::test
