// Push from a surface: writes velocities along the triangles' normals onto the faces of the cells
// near them. Particles hand over their own velocities in the same way.
#pragma once

#include <array>

#include "math/int_box.h"
#include "scene/walk/block_cursor.h"
#include "scene/walk/polygon_walk.h"
#include "scene/walk/thickness_profile.h"

namespace nbx {

/// The velocity components on the x, y and z faces: face (x, y, z) of the first field lies between
/// the cells x - 1 and x, and so on.
using FaceFields = std::array<SparseField<float, 3>*, 3>;

/// Writes v = weight * strength * normal onto both faces of a cell on each axis, where the largest
/// magnitude stays. A component of 0 touches no block of its axis. Threads as in
/// CellCenterVoxelizer; all three maps need room.
class VelocityVoxelizer {
 public:
  using Cursor = std::array<BlockCursor, 3>;  // of one thread

  /// `box` is in cells; the faces go one further and must still lie within the coordinates that a
  /// sparse field can hold.
  VelocityVoxelizer(const FaceFields& fields, const IntBox& box, ThicknessProfile profile,
                    double strength)
      : fields_(fields), box_(box), profile_(profile), strength_(strength) {}

  const IntBox& box() const { return box_; }
  const ThicknessProfile& profile() const { return profile_; }
  Cursor cursor() const {
    return {BlockCursor(*fields_[0]), BlockCursor(*fields_[1]), BlockCursor(*fields_[2])};
  }

  /// Merges one cell at the squared distance q with the triangle's `normal` as it stands; the
  /// weight is scaled by `strength` on top of the voxelizer's own.
  void hit(Cursor& cursor, const Vec3i& cell, double q, const VoxelizationTriangle& triangle,
           float strength = 1) const;

  /// All cells within reach of the triangle, along its unit normal.
  void voxelize(const VoxelizationTriangle& triangle) const;

 private:
  FaceFields fields_;
  IntBox box_;
  ThicknessProfile profile_;
  double strength_;
};

/// Voxelizes all triangles in parallel; what the fields held before is merged in. The values are
/// the same bits for any number of threads.
void voxelize_velocity(const FaceFields& fields, const PolygonWalk& walk, const IntBox& box,
                       const ThicknessProfile& profile, double strength);

}  // namespace nbx
