// Emission from a surface: writes into a sparse field how near each cell is to the triangles.
#pragma once

#include <span>

#include "math/int_box.h"
#include "math/sparse_field.h"
#include "scene/triangle_scan.h"

namespace nbx {

/// How the weight of a cell falls off with its distance from the surface.
struct ThicknessProfile {
  double thickness = 1;  // reach in cells, above 0
  /// 1 on the surface, falling linearly to 0 at the reach.
  float weight(double square_distance) const {
    return static_cast<float>(std::max(1 - std::sqrt(square_distance) / thickness, 0.0));
  }
};

/// Writes the weights of the cells of `box` round one triangle. Any number of threads may voxelize
/// into one field at once, once its map has room (SparseField::hash_resize): a cell near several
/// triangles keeps the largest weight, whatever the order. A weight of 0 makes no block.
class CellCenterVoxelizer {
 public:
  /// `box` must lie within the coordinates that a sparse field can hold.
  CellCenterVoxelizer(SparseField<float, 3>& field, const IntBox& box, ThicknessProfile profile)
      : field_(field), box_(box), profile_(profile) {}

  void voxelize(const VoxelizationTriangle& triangle) const;

  /// Blocks that the triangle can touch, at most.
  std::size_t blocks(const VoxelizationTriangle& triangle) const;

 private:
  SparseField<float, 3>& field_;
  IntBox box_;
  ThicknessProfile profile_;
};

/// Voxelizes all triangles in parallel; what `field` held before is merged in. The values are the
/// same bits for any number of threads, the order of the blocks isn't.
void voxelize(SparseField<float, 3>& field, std::span<const VoxelizationTriangle> triangles,
              const IntBox& box, const ThicknessProfile& profile);

/// Stores `value` unless the cell's magnitude is larger: an atomic maximum by magnitude.
void merge_largest(float& cell, float value);

}  // namespace nbx
