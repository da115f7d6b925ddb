#include "math/sparse_field_operators.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "util/cuda_use_flags.h"

namespace nbx {

namespace {

using Sparse = SparseField<float, 3>;
constexpr int kEdge = Sparse::kEdge;

Vec3i origin(const SparseBlockEntry& b) { return {b.x, b.y, b.z}; }

// The box of the block's voxels with |value| > threshold, empty for none.
IntBox block_bbox(const SparseBlockEntry& block, float threshold) {
  unsigned along[3] = {0, 0, 0};  // bit i: a voxel with coordinate i on the axis counts
  const float* v = block.data;
  for (unsigned z = 0; z < kEdge; ++z)
    for (unsigned y = 0; y < kEdge; ++y) {
      unsigned row = 0;
      for (unsigned x = 0; x < kEdge; ++x) row |= unsigned{std::fabs(*v++) > threshold} << x;
      along[0] |= row;
      along[1] |= unsigned{row != 0} << y;
      along[2] |= unsigned{row != 0} << z;
    }
  if (along[0] == 0) return {};
  IntBox box{origin(block), origin(block)};
  for (int a = 0; a < 3; ++a) {
    box.lo[a] += std::countr_zero(along[a]);
    box.hi[a] += std::bit_width(along[a]) - 1;
  }
  return box;
}

// Calls row(block index, dense index, n) for each row of voxels that the block shares with a dense
// field whose cell (0, 0, 0) is domain voxel `offset`.
template <class Row>
void for_each_shared_row(const SparseBlockEntry& block, const Vec3i& offset,
                         const Field<float>& dense, Row row) {
  const Vec3i at = origin(block) - offset;  // the block's origin in the dense field
  Vec3i lo, hi;
  for (int a = 0; a < 3; ++a) {
    lo[a] = std::max(-at[a], 0);
    hi[a] = std::min(dense.dims()[a] - at[a], kEdge);
  }
  if (lo[0] >= hi[0]) return;
  for (int z = lo[2]; z < hi[2]; ++z)
    for (int y = lo[1]; y < hi[1]; ++y)
      row(Sparse::voxel_index(lo[0], y, z), dense.index(at[0] + lo[0], at[1] + y, at[2] + z),
          hi[0] - lo[0]);
}

// Inserts the blocks of x into z; the data of the i-th is element i.
std::vector<float*> matching_blocks(Sparse& z, const Sparse& x) {
  std::vector<float*> data;
  data.reserve(x.blocks().size());
  for (const SparseBlockEntry& b : x.blocks()) data.push_back(z.hash_insert(b.x, b.y, b.z).data);
  return data;
}

// Calls work(i) for each block of x on all threads.
template <class Work>
void for_each_block(const Sparse& x, Work work) {
  const std::ptrdiff_t count = x.blocks().size();
  if (count == 0) return;
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t i = 0; i < count; ++i) work(i);
}

}  // namespace

IntBox min_bbox(const Sparse& field, float threshold) {
  const std::ptrdiff_t count = field.blocks().size();
  IntBox box;
  if (count == 0) return box;
#pragma omp parallel
  {
    IntBox own;
#pragma omp for schedule(static) nowait
    for (std::ptrdiff_t i = 0; i < count; ++i)
      own = box_union(own, block_bbox(field.blocks()[i], threshold));
#pragma omp critical(nbx_sparse_min_bbox)
    box = box_union(box, own);
  }
  return box;
}

void asxpy(const Vec3i& offset, Field<float>& dense, float a, const Sparse& sparse) {
  for_each_block(sparse, [&](std::size_t i) {
    const SparseBlockEntry& block = sparse.blocks()[i];
    for_each_shared_row(block, offset, dense, [&](int from, std::size_t to, int n) {
      float* d = dense.data() + to;
      const float* s = block.data + from;
      for (int x = 0; x < n; ++x) d[x] += a * s[x];
    });
  });
}

void m_asxpy(const Vec3i& offset, MField& dense, float a, const Sparse& sparse) {
  try_gpu(no_kernel, [&] { asxpy(offset, dense.write_cpu(), a, sparse); });
}

void sparse_axpy(Sparse& z, float a, const Sparse& x) {
  const std::vector<float*> targets = matching_blocks(z, x);
  for_each_block(x, [&](std::size_t i) {
    const float* xs = x.blocks()[i].data;
    float* zs = targets[i];
#pragma omp simd
    for (int v = 0; v < Sparse::kBlockSize; ++v) zs[v] += a * xs[v];
  });
}

void sparse_raise(Sparse& z, float a, const Sparse& x, const Vec3i& offset, const Field<float>& y) {
  const std::vector<float*> targets = matching_blocks(z, x);
  for_each_block(x, [&](std::size_t i) {
    const SparseBlockEntry& block = x.blocks()[i];
    float ys[Sparse::kBlockSize] = {};
    for_each_shared_row(block, offset, y, [&](int to, std::size_t from, int n) {
      std::copy_n(y.data() + from, n, ys + to);
    });
    const float* xs = block.data;
    float* zs = targets[i];
#pragma omp simd
    for (int v = 0; v < Sparse::kBlockSize; ++v) zs[v] += std::max(a * xs[v] - ys[v] - zs[v], 0.0f);
  });
}

}  // namespace nbx
