// Sparse blocks: insertion as a rasteriser does it, and one field into another. Cells are the
// voxels of the blocks.
#include "bench/passes.h"
#include "math/sparse_field.h"
#include "math/sparse_field_operators.h"

namespace nbx::bench {

namespace {

using Sparse = SparseField<float, 3>;

constexpr int kBlocks = 4096;

void insert_cube(Sparse& field) {
  for (int z = 0; z < 16; ++z)
    for (int y = 0; y < 16; ++y)
      for (int x = 0; x < 16; ++x) field.hash_insert(8 * x, 8 * y, 8 * z);
}

void bench_sparse_insert(benchmark::State& state) {
  Sparse field;
  measure(state, std::size_t{kBlocks} * Sparse::kBlockSize, [&] {
    field.clear();
    insert_cube(field);
  });
}
BENCHMARK(bench_sparse_insert)->Name("sparse_insert");

void bench_sparse_axpy(benchmark::State& state) {
  Sparse z, x;
  insert_cube(x);
  measure(state, std::size_t{kBlocks} * Sparse::kBlockSize, [&] { sparse_axpy(z, 0.5f, x); });
}
BENCHMARK(bench_sparse_axpy)->Name("sparse_axpy");

}  // namespace

}  // namespace nbx::bench
