#include "scene/walk/block_bound.h"

#include <atomic>
#include <bit>
#include <cstdint>

#include "scene/walk/block_cursor.h"
#include "scene/walk/triangle_scan.h"

namespace nbx {

namespace {

constexpr std::size_t kMostBits = std::size_t{1} << 27;  // 16 MB

/// The blocks of a box of cells.
IntBox blocks_of(IntBox cells) {
  for (int a = 0; a < 3; ++a) {
    cells.lo[a] >>= 3;
    cells.hi[a] >>= 3;
  }
  return cells;
}

/// The blocks of the cells within reach; empty if there are none.
IntBox blocks_near(const VoxelizationTriangle& triangle, double reach, const IntBox& box) {
  IntBox cells = scan_box(triangle, reach, box);
  if (cells.empty()) return cells;
  cells.hi += Vec3i(1, 1, 1);
  return blocks_of(cells);
}

template <class Body>
void each_block(const IntBox& blocks, Body&& body) {
  for (int z = blocks.lo[2]; z <= blocks.hi[2]; ++z)
    for (int y = blocks.lo[1]; y <= blocks.hi[1]; ++y)
      for (int x = blocks.lo[0]; x <= blocks.hi[0]; ++x) body(x, y, z);
}

}  // namespace

std::size_t block_bound(const PolygonWalk& walk, double reach, const IntBox& box) {
  if (box.empty()) return 0;
  const IntBox all = blocks_of({box.lo, box.hi + Vec3i(1, 1, 1)});
  const auto size = vector_cast<std::size_t>(all.size());
  const std::size_t count = size[0] * size[1] * size[2];
  std::atomic<std::size_t> sum{0};
  // A box too large to mark its blocks: blocks near two triangles count twice.
  if (count > kMostBits) {
    walk.run([&](const VoxelizationTriangle& triangle) {
      const auto n = vector_cast<std::size_t>(blocks_near(triangle, reach, box).size());
      sum.fetch_add(n[0] * n[1] * n[2], std::memory_order_relaxed);
    });
    return std::min<std::size_t>(sum, count);
  }

  std::vector<std::uint64_t> marks(count / 64 + 1);
  walk.run([&](const VoxelizationTriangle& triangle) {
    each_block(blocks_near(triangle, reach, box), [&](int x, int y, int z) {
      const auto at = vector_cast<std::size_t>(Vec3i(x, y, z) - all.lo);
      const std::size_t i = at[0] + size[0] * (at[1] + size[1] * at[2]);
      const std::uint64_t bit = std::uint64_t{1} << (i % 64);
      std::atomic_ref<std::uint64_t> word(marks[i / 64]);
      if (!(word.load(std::memory_order_relaxed) & bit))
        word.fetch_or(bit, std::memory_order_relaxed);
    });
  });
  std::size_t marked = 0;
  for (std::uint64_t word : marks) marked += std::popcount(word);
  return marked;
}

}  // namespace nbx
