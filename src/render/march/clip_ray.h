// The part of a ray in which a volume may be visible.
#pragma once

#include "render/render_volume.h"

namespace nbx {

/// A volume that a ray meets, with the ray in its voxel coordinates: the point at the world
/// distance t is voxelOrigin + t voxelDirection.
struct VolumeEntry {
  const RenderVolume* volume = nullptr;
  Vec3d voxelOrigin, voxelDirection;
  /// World length of the piece of the ray that is one voxel long in voxel coordinates. It converts
  /// distances of the proximity. If the volume is scaled unevenly, it depends on the ray's
  /// direction.
  double voxelLength = 0;
  double tEnter = 0, tExit = 0;
  bool active = false;

  Vec3d at(double t) const { return voxelOrigin + t * voxelDirection; }
};

/// Clips [tEnter, tExit] of `entry` to the volume's box and then, by the proximity field, to the
/// part in which it may be visible. False if nothing is left.
bool clipRay(VolumeEntry& entry, const RenderVolume& volume, const RayRecord& ray);

/// World distance from t within which the ray sees nothing; 0 if it may see something at t.
double empty_distance(const VolumeEntry& entry, double t);

}  // namespace nbx
