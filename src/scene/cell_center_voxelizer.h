// Emission from a surface: writes a weight into each cell of a sparse field that is near a
// triangle.
#pragma once

#include <span>

#include "math/int_box.h"
#include "scene/walk/block_cursor.h"
#include "scene/walk/polygon_walk.h"
#include "scene/walk/thickness_profile.h"

namespace nbx {

/// Writes the weights of the cells of `box` around triangles. Any number of threads may write into
/// one field at once if its map has room (SparseField::hash_resize): a cell near several triangles
/// keeps the largest weight, whatever the order. A weight of 0 makes no block.
class CellCenterVoxelizer {
 public:
  using Cursor = BlockCursor;  // of one thread

  /// `box` must lie within the coordinates that a sparse field can hold.
  CellCenterVoxelizer(SparseField<float, 3>& field, const IntBox& box, ThicknessProfile profile)
      : field_(field), box_(box), profile_(profile) {}

  Cursor cursor() const { return Cursor(field_); }

  /// Merges one cell of the box at the squared distance q; its weight is scaled by `strength`.
  void hit(Cursor& cursor, const Vec3i& cell, double q, const VoxelizationTriangle& triangle,
           float strength = 1) const;

  /// All cells within reach of the triangle.
  void voxelize(const VoxelizationTriangle& triangle) const;

 private:
  SparseField<float, 3>& field_;
  IntBox box_;
  ThicknessProfile profile_;
};

/// Voxelizes all triangles in parallel and merges them into `field`. The values are the same bits
/// for any number of threads; the order of the blocks may differ.
void voxelize(SparseField<float, 3>& field, const PolygonWalk& walk, const IntBox& box,
              const ThicknessProfile& profile);

/// The same for the corners of a list of triangles.
void voxelize(SparseField<float, 3>& field, std::span<const VoxelizationTriangle> triangles,
              const IntBox& box, const ThicknessProfile& profile);

}  // namespace nbx
