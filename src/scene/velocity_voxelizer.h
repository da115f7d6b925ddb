// Push from a surface: writes velocities along the normals of triangles onto the faces of the cells
// near them. Particles pass on their velocities in the same way.
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

/// Writes v = weight * strength * normal onto both faces of a cell on each axis; the largest
/// magnitude wins. A component of 0 makes no block. Threads as in CellCenterVoxelizer; all three
/// maps need room.
class VelocityVoxelizer {
 public:
  using Cursor = std::array<BlockCursor, 3>;  // of one thread

  /// `box` is in cells. Its upper faces lie one further and must be within the coordinates that a
  /// sparse field can hold.
  VelocityVoxelizer(const FaceFields& fields, const IntBox& box, ThicknessProfile profile,
                    double strength)
      : fields_(fields), box_(box), profile_(profile), strength_(strength) {}

  Cursor cursor() const {
    return {BlockCursor(*fields_[0]), BlockCursor(*fields_[1]), BlockCursor(*fields_[2])};
  }

  /// Merges one cell at the squared distance q, with the `normal` of the triangle as it is. The
  /// weight is scaled by `strength` and by that of the voxelizer.
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

/// Voxelizes all triangles in parallel and merges them into the fields. The values are the same
/// bits for any number of threads.
void voxelize_velocity(const FaceFields& fields, const PolygonWalk& walk, const IntBox& box,
                       const ThicknessProfile& profile, double strength);

}  // namespace nbx
