#include "scene/cell_center_voxelizer.h"

#include <atomic>
#include <exception>

namespace nbx {

namespace {

/// Blocks that a box of cells reaches into.
std::size_t block_count(const IntBox& box) {
  if (box.empty()) return 0;
  std::size_t n = 1;
  for (int a = 0; a < 3; ++a)
    n *= static_cast<std::size_t>((box.hi[a] >> 3) - (box.lo[a] >> 3) + 1);
  return n;
}

/// The block of the last hit: cells come in rows, so most hits fall into it.
struct BlockCursor {
  SparseField<float, 3>& field;
  Vec3i block{-1, -1, -1};
  float* data = nullptr;

  float& cell(int x, int y, int z) {
    const Vec3i wanted(x >> 3, y >> 3, z >> 3);
    if (wanted != block) {
      data = field.hash_insert(x, y, z).data;
      block = wanted;
    }
    return data[SparseField<float, 3>::voxel_index(x & 7, y & 7, z & 7)];
  }
};

}  // namespace

void merge_largest(float& cell, float value) {
  std::atomic_ref<float> stored(cell);
  float old = stored.load(std::memory_order_relaxed);
  while (std::abs(old) <= std::abs(value) &&
         !stored.compare_exchange_weak(old, value, std::memory_order_relaxed)) {
  }
}

void CellCenterVoxelizer::voxelize(const VoxelizationTriangle& triangle) const {
  BlockCursor cursor{field_};
  TriangleScan(triangle, profile_.thickness, box_).run([&](int x, int y, int z, double q, double) {
    const float w = profile_.weight(q);
    if (w > 0) merge_largest(cursor.cell(x, y, z), w);
  });
}

std::size_t CellCenterVoxelizer::blocks(const VoxelizationTriangle& triangle) const {
  return block_count(TriangleScan(triangle, profile_.thickness, box_).box());
}

void voxelize(SparseField<float, 3>& field, std::span<const VoxelizationTriangle> triangles,
              const IntBox& box, const ThicknessProfile& profile) {
  const CellCenterVoxelizer voxelizer(field, box, profile);
  std::size_t blocks = 0;
  for (const VoxelizationTriangle& triangle : triangles) blocks += voxelizer.blocks(triangle);
  field.hash_resize(field.blocks().size() + std::min(blocks, block_count(box)));

  std::exception_ptr failure;
  const auto n = static_cast<std::ptrdiff_t>(triangles.size());
#pragma omp parallel for schedule(dynamic, 1)
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    try {
      voxelizer.voxelize(triangles[static_cast<std::size_t>(i)]);
    } catch (...) {
#pragma omp critical(voxelize_failure)
      failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace nbx
