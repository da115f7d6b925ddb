// The part of a ray that lies in what a volume shows.
#pragma once

#include "render/render_volume.h"

namespace nbx {

/// A volume that a ray meets, with the ray in its voxel coordinates: the point at t is voxelOrigin
/// + t voxelDirection, where t is the distance in the world.
struct VolumeEntry {
  const RenderVolume* volume = nullptr;
  Vec3d voxelOrigin, voxelDirection;
  /// World length of the way along the ray that is as long as a voxel's edge in voxel coordinates:
  /// distances of the proximity count in it. In a volume that is scaled evenly it is the same for
  /// all rays, in others it depends on where the ray goes.
  double voxelLength = 0;
  double tEnter = 0, tExit = 0;
  bool active = false;

  Vec3d at(double t) const { return voxelOrigin + t * voxelDirection; }
};

/// Narrows [tEnter, tExit] of `entry` to the volume's box and then, through the proximity field, to
/// what shows. False if nothing is left.
bool clipRay(VolumeEntry& entry, const RenderVolume& volume, const RayRecord& ray);

/// How far from t the ray sees nothing, in world units; 0 if it may.
double empty_distance(const VolumeEntry& entry, double t);

}  // namespace nbx
