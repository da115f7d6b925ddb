#include "scene/cell_center_voxelizer.h"

#include "scene/walk/block_bound.h"
#include "scene/walk/triangle_scan.h"

namespace nbx {

namespace {

constexpr double kRounding = 1e-7;  // more than the rounding of a weight to a float

}  // namespace

void CellCenterVoxelizer::hit(Cursor& cursor, const Vec3i& cell, double q,
                              const VoxelizationTriangle& triangle, float strength) const {
  float w = strength * profile_.weight(q);
  if (!(w > 0)) return;
  if (!profile_.plain()) w *= profile_.scale(triangle, cell);
  if (w > 0) merge_largest(cursor.cell(cell[0], cell[1], cell[2]), w);
}

void CellCenterVoxelizer::voxelize(const VoxelizationTriangle& triangle) const {
  Cursor at = cursor();
  const TriangleScan scan(triangle, profile_.thickness, box_);
  if (!profile_.plain()) {
    scan.run([&](int x, int y, int z, double q, double) { hit(at, Vec3i(x, y, z), q, triangle); });
    return;
  }
  const double thickness = profile_.thickness, reach = thickness * thickness;
  scan.run([&](int x, int y, int z, double q, double) {
    if (q >= reach) return;
    float& cell = at.cell(x, y, z);
    // Most cells have already met a nearer triangle: skip the square root.
    const double within = (1 + kRounding - load(cell)) * thickness;
    if (q > within * within) return;
    const float w = profile_.weight(q);
    if (w > 0) merge_largest(cell, w);
  });
}

void voxelize(SparseField<float, 3>& field, const PolygonWalk& walk, const IntBox& box,
              const ThicknessProfile& profile) {
  field.hash_resize(field.blocks().size() + block_bound(walk, profile.thickness, box));
  const CellCenterVoxelizer voxelizer(field, box, profile);
  walk.run([&](const VoxelizationTriangle& triangle) { voxelizer.voxelize(triangle); });
}

void voxelize(SparseField<float, 3>& field, std::span<const VoxelizationTriangle> triangles,
              const IntBox& box, const ThicknessProfile& profile) {
  DetachedPolygonObject mesh;
  for (const VoxelizationTriangle& t : triangles) {
    const int a = static_cast<int>(mesh.points.size());
    for (const Vec3f& p : {t.p0, t.p1, t.p2}) mesh.points.push_back(vector_cast<double>(p));
    mesh.polygons.push_back({a, a + 2, a + 1, a + 1});  // the walk swaps them back
  }
  voxelize(field, PolygonWalk({&mesh, 1}, Affine3d::identity()), box, profile);
}

}  // namespace nbx
