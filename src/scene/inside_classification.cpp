#include "scene/inside_classification.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <exception>

#include "scene/walk/line_crossing.h"

namespace nbx {

namespace {

/// A byte for each cell of a box, x fastest; bit `axis` belongs to the lines along that axis. At
/// first it means that the line crosses the surface just before the cell, at the end that the line
/// votes for "inside".
struct Votes {
  IntBox box;
  Vec3i size;
  std::vector<std::uint8_t> bits;

  explicit Votes(const IntBox& cells) : box(cells), size(cells.size()) {
    bits.resize(std::size_t(size[0]) * size[1] * size[2]);
  }
  std::size_t index(int i, int j, int k) const {
    return i + std::size_t(size[0]) * (j + std::size_t(size[1]) * k);
  }
  std::uint8_t* row(int j, int k) { return bits.data() + index(0, j, k); }
  const std::uint8_t* row(int j, int k) const { return bits.data() + index(0, j, k); }
};

/// The cells of `box` within the bounds of the triangles. All others are outside.
IntBox cells_within(const std::vector<Bounds3f>& bounds, const IntBox& box) {
  if (bounds.empty() || box.empty()) return {};
  IntBox cells;
  for (int a = 0; a < 3; ++a) {
    float lo = bounds[0].lo[a], hi = bounds[0].hi[a];
    for (const Bounds3f& b : bounds) {
      lo = std::min(lo, b.lo[a]);
      hi = std::max(hi, b.hi[a]);
    }
    const double first = std::max<double>(std::floor(lo), box.lo[a]);
    const double last = std::min<double>(std::ceil(hi), box.hi[a]);
    if (first > last) return {};
    cells.lo[a] = static_cast<int>(first);
    cells.hi[a] = static_cast<int>(last);
  }
  return cells;
}

/// Marks the crossings of all lines along one axis. A line with a single crossing doesn't count.
void mark_crossings(Votes& votes, int axis, const KdTree& tree,
                    const std::vector<PolygonObjectContainer::Triangle>& triangles) {
  const int inner = axis == 0 ? 1 : 0, outer = axis == 2 ? 1 : 2;
  const int n = votes.size[axis];
  const auto bit = static_cast<std::uint8_t>(1 << axis);
#pragma omp parallel
  {
    KdVisitor visitor(tree);
    std::vector<int> crossings;
#pragma omp for schedule(dynamic, 1)
    for (int o = 0; o < votes.size[outer]; ++o)
      for (int i = 0; i < votes.size[inner]; ++i) {
        Vec3i at;
        at[inner] = i;
        at[outer] = o;
        const Vec3i cell = votes.box.lo + at;
        crossings.clear();
        visitor.line(axis, vector_cast<float>(cell), [&](std::uint32_t t) {
          if (const auto x = line_crossing(triangles[t].p, axis, cell))
            crossings.push_back(
                static_cast<int>(std::clamp<double>(std::ceil(*x - votes.box.lo[axis]), 0, n)));
        });
        if (crossings.size() < 2) continue;
        for (int first : crossings) {
          if (first == n) continue;  // behind the box
          at[axis] = first;
          votes.bits[votes.index(at[0], at[1], at[2])] ^= bit;
        }
      }
  }
}

/// From crossings to votes: along each axis the bit of a cell becomes the parity of all crossings
/// before it.
void sum_crossings(Votes& votes) {
  const int nx = votes.size[0], ny = votes.size[1], nz = votes.size[2];
#pragma omp parallel
  {
#pragma omp for schedule(static)
    for (int k = 0; k < nz; ++k)
      for (int j = 0; j < ny; ++j) {
        std::uint8_t* row = votes.row(j, k);
        for (int i = 1; i < nx; ++i) row[i] ^= row[i - 1] & 1;
        if (j == 0) continue;
        const std::uint8_t* before = votes.row(j - 1, k);
        for (int i = 0; i < nx; ++i) row[i] ^= before[i] & 2;
      }
#pragma omp for schedule(static)
    for (int j = 0; j < ny; ++j)
      for (int k = 1; k < nz; ++k) {
        std::uint8_t* row = votes.row(j, k);
        const std::uint8_t* before = votes.row(j, k - 1);
        for (int i = 0; i < nx; ++i) row[i] ^= before[i] & 4;
      }
  }
}

Votes vote(const PolygonObjectContainer& container) {
  const std::vector<Bounds3f> bounds = triangle_bounds(container);
  Votes votes(cells_within(bounds, container.box()));
  if (votes.bits.empty()) return votes;
  const KdTree tree(bounds);
  for (int axis = 0; axis < 3; ++axis) mark_crossings(votes, axis, tree, container.triangles());
  sum_crossings(votes);
  return votes;
}

bool inside(std::uint8_t bits) { return std::popcount(bits) > 1; }

/// Calls body(x, y, z) for each cell of the block that lies inside; (bx, by, bz) is its origin.
template <class Body>
void each_inside(const Votes& votes, const Vec3i& block, Body&& body) {
  const IntBox cells = box_intersection({block, block + Vec3i(7, 7, 7)}, votes.box);
  for (int z = cells.lo[2]; z <= cells.hi[2]; ++z)
    for (int y = cells.lo[1]; y <= cells.hi[1]; ++y) {
      const std::uint8_t* row = votes.row(y - votes.box.lo[1], z - votes.box.lo[2]);
      for (int x = cells.lo[0]; x <= cells.hi[0]; ++x)
        if (inside(row[x - votes.box.lo[0]])) body(x, y, z);
    }
}

}  // namespace

void classify_inside(SparseField<float, 3>& field, const PolygonObjectContainer& triangles) {
  const Votes votes = vote(triangles);
  if (votes.bits.empty()) return;
  std::vector<Vec3i> blocks;
  const auto down = [](int x) { return x & ~7; };
  const Vec3i &lo = votes.box.lo, &hi = votes.box.hi;
  for (int z = down(lo[2]); z <= hi[2]; z += 8)
    for (int y = down(lo[1]); y <= hi[1]; y += 8)
      for (int x = down(lo[0]); x <= hi[0]; x += 8) blocks.emplace_back(x, y, z);
  field.hash_resize(field.blocks().size() + blocks.size());

  std::exception_ptr failure;
#pragma omp parallel for schedule(dynamic, 16)
  for (std::size_t b = 0; b < blocks.size(); ++b) {
    try {
      float* data = nullptr;
      each_inside(votes, blocks[b], [&](int x, int y, int z) {
        if (!data) data = field.hash_insert(x, y, z).data;
        data[SparseField<float, 3>::voxel_index(x & 7, y & 7, z & 7)] = 1;
      });
    } catch (...) {
#pragma omp critical(classify_inside_failure)
      failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

void classify_inside(VCVDT<float>& grid, const PolygonObjectContainer& triangles) {
  const Votes votes = vote(triangles);
#pragma omp parallel for schedule(static)
  for (int k = 0; k < votes.size[2]; ++k)
    for (int j = 0; j < votes.size[1]; ++j) {
      const std::uint8_t* row = votes.row(j, k);
      std::uint32_t* label =
          grid.label.data() + grid.index(votes.box.lo[0], votes.box.lo[1] + j, votes.box.lo[2] + k);
      for (int i = 0; i < votes.size[0]; ++i)
        label[i] += static_cast<std::uint32_t>(std::popcount(row[i])) * VCVDT<float>::kVote;
    }
}

}  // namespace nbx
