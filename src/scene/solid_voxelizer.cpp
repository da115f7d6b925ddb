#include "scene/solid_voxelizer.h"

#include <atomic>
#include <tuple>

#include "scene/walk/triangle_scan.h"

namespace nbx {

namespace {

/// The id of the corner that is nearest to the cell.
int nearest_id(const VoxelizationTriangle& t, const Vec3f& cell) {
  const auto square_to = [&](const Vec3f& p) { return dot(cell - p, cell - p); };
  const float d0 = square_to(t.p0), d1 = square_to(t.p1), d2 = square_to(t.p2);
  if (d2 <= d0 && d2 <= d1) return t.ids[2];
  return d1 < d0 ? t.ids[1] : t.ids[0];
}

/// What a surface writes into a cell. The smallest wins.
struct Surface {
  float dist2;
  std::uint32_t id;
  Vec3f offset;
  auto key() const { return std::tuple(dist2, id, offset[0], offset[1], offset[2]); }
};

void merge(VCVDT<float>& grid, std::size_t cell, const Surface& surface) {
  using Grid = VCVDT<float>;
  std::atomic_ref<float> dist2(grid.dist2[cell]);
  float old = dist2.load(std::memory_order_relaxed);
  do {  // no lock for a cell that is nearer to something else
    if (old != Grid::kLocked && old < surface.dist2) return;
    old = dist2.exchange(Grid::kLocked, std::memory_order_acquire);
  } while (old == Grid::kLocked);

  std::uint32_t& label = grid.label[cell];
  const Surface before{old, label & Grid::kIdMask, {grid.dx[cell], grid.dy[cell], grid.dz[cell]}};
  if (surface.key() < before.key()) {
    label = (label & ~Grid::kIdMask) | surface.id;
    grid.dx[cell] = surface.offset[0];
    grid.dy[cell] = surface.offset[1];
    grid.dz[cell] = surface.offset[2];
    old = surface.dist2;
  }
  dist2.store(old, std::memory_order_release);
}

}  // namespace

void voxelize(VCVDT<float>& grid, const VoxelizationTriangle& triangle) {
  const TriangleScan scan(triangle, kSolidReach, {{0, 0, 0}, grid.dims() - Vec3i(1, 1, 1)});
  if (scan.box().empty()) return;
  const Vec3f normal = vector_cast<float>(scan.normal());
  scan.run([&](int x, int y, int z, double q, double d) {
    const int id = nearest_id(triangle, vector_cast<float>(Vec3i(x, y, z)));
    merge(grid, grid.index(x, y, z),
          {static_cast<float>(q), static_cast<std::uint32_t>(id) & VCVDT<float>::kIdMask,
           d > 0 ? -normal : normal});
  });
}

void voxelize(VCVDT<float>& grid, const PolygonWalk& walk) {
  walk.run([&](const VoxelizationTriangle& triangle) { voxelize(grid, triangle); });
}

}  // namespace nbx
