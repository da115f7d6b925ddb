#include "render/march/clip_ray.h"

#include <algorithm>
#include <cmath>

#include "math/interpolation.h"

namespace nbx {

namespace {

bool clip_to_box(VolumeEntry& entry, const RenderVolume& volume) {
  for (int a = 0; a < 3; ++a) {
    const double o = entry.voxelOrigin[a], d = entry.voxelDirection[a];
    if (d == 0) {
      if (!(o >= volume.voxelBoxMin[a] && o <= volume.voxelBoxMax[a])) return false;
      continue;
    }
    const double t0 = (volume.voxelBoxMin[a] - o) / d, t1 = (volume.voxelBoxMax[a] - o) / d;
    entry.tEnter = std::max(entry.tEnter, std::min(t0, t1));
    entry.tExit = std::min(entry.tExit, std::max(t0, t1));
  }
  return entry.tExit > entry.tEnter && std::isfinite(entry.tEnter) && std::isfinite(entry.tExit);
}

double proximity_at(const RenderVolume& volume, const Vec3d& p) {
  const Vec3f q = vector_cast<float>(p);
  return sample_linear(*volume.proximity, q[0], q[1], q[2]);
}

// The distance from `origin` along the ray that can be skipped, at most `end`. Walks by steps as
// long as the proximity, and then back in small steps if it is inside. `voxel` is
// VolumeEntry::voxelLength.
double skip_empty(const RenderVolume& volume, const Vec3d& origin, const Vec3d& direction,
                  double end, double voxel) {
  if (volume.near.contains(vector_cast<float>(origin))) return 0;
  double t = 0, d = 0;
  while (t < end) {
    d = proximity_at(volume, origin + t * direction);
    if (!(d >= 0.001)) break;
    t += std::max(d, 0.5) * voxel;
  }
  while (d < 0 && t > 0) {
    t += std::min(d, -0.25) * voxel;
    d = proximity_at(volume, origin + t * direction);
  }
  return std::clamp(t, 0.0, end);
}

}  // namespace

bool clipRay(VolumeEntry& entry, const RenderVolume& volume, const RayRecord& ray) {
  entry.volume = &volume;
  entry.voxelOrigin = volume.worldToVoxel(ray.origin);
  entry.voxelDirection = volume.worldToVoxel.linear(ray.direction);
  entry.voxelLength = 1 / length(entry.voxelDirection);
  entry.tEnter = ray.tMin;
  entry.tExit = ray.tMax;
  if (!clip_to_box(entry, volume)) return false;
  if (!volume.proximity || !(entry.voxelLength > 0)) return true;

  entry.tEnter += skip_empty(volume, entry.at(entry.tEnter), entry.voxelDirection,
                             entry.tExit - entry.tEnter, entry.voxelLength);
  if (!(entry.tEnter < entry.tExit)) return false;
  const double back = skip_empty(volume, entry.at(entry.tExit), -entry.voxelDirection,
                                 entry.tExit - entry.tEnter, entry.voxelLength);
  entry.tExit = std::max(entry.tEnter, entry.tExit - back);
  return entry.tExit > entry.tEnter;
}

double empty_distance(const VolumeEntry& entry, double t) {
  const RenderVolume& volume = *entry.volume;
  if (!volume.proximity) return 0;
  const Vec3d p = entry.at(t);
  if (volume.near.contains(vector_cast<float>(p))) return 0;
  return std::max(proximity_at(volume, p), 0.0) * entry.voxelLength;
}

}  // namespace nbx
