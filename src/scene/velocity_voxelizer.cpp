#include "scene/velocity_voxelizer.h"

#include "scene/walk/block_bound.h"
#include "scene/walk/triangle_scan.h"

namespace nbx {

void VelocityVoxelizer::hit(Cursor& cursor, const Vec3i& cell, double q,
                            const VoxelizationTriangle& triangle, float strength) const {
  float w = strength * profile_.weight(q);
  if (!(w > 0)) return;
  if (!profile_.plain()) w *= profile_.scale(triangle, cell);
  if (!(w > 0)) return;  // a negative weight doesn't reverse the push
  const Vec3f v = triangle.normal * (w * static_cast<float>(strength_));
  for (int a = 0; a < 3; ++a) {
    if (!(std::abs(v[a]) > 0)) continue;
    Vec3i face = cell;
    for (int side = 0; side < 2; ++side, ++face[a])
      merge_largest(cursor[a].cell(face[0], face[1], face[2]), v[a]);
  }
}

void VelocityVoxelizer::voxelize(const VoxelizationTriangle& triangle) const {
  const TriangleScan scan(triangle, profile_.thickness, box_);
  if (scan.box().empty()) return;
  VoxelizationTriangle pushing = triangle;
  pushing.normal = vector_cast<float>(scan.normal());
  Cursor at = cursor();
  scan.run([&](int x, int y, int z, double q, double) { hit(at, Vec3i(x, y, z), q, pushing); });
}

void voxelize_velocity(const FaceFields& fields, const PolygonWalk& walk, const IntBox& box,
                       const ThicknessProfile& profile, double strength) {
  const std::size_t blocks = block_bound(walk, profile.thickness, box);
  for (SparseField<float, 3>* field : fields) field->hash_resize(field->blocks().size() + blocks);
  const VelocityVoxelizer voxelizer(fields, box, profile, strength);
  walk.run([&](const VoxelizationTriangle& triangle) { voxelizer.voxelize(triangle); });
}

}  // namespace nbx
