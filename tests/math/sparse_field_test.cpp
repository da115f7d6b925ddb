#include "math/sparse_field.h"

#include <algorithm>
#include <barrier>
#include <set>
#include <thread>

#include "math/field_operators.h"
#include "math/mfield_operations.h"
#include "math/sparse_field_operators.h"
#include "support/support.h"
#include "util/exception.h"

namespace nbx {

namespace {

using test::voxel;
using Sparse = SparseField<float, 3>;

// `count` blocks along a line.
void insert_line(Sparse& f, int count) {
  for (int i = 0; i < count; ++i) f.hash_insert(8 * i, 0, 0);
}

// Every block has one slot with its key and data.
bool consistent(const Sparse& f) {
  std::set<std::tuple<int, int, int>> origins;
  for (const SparseBlockEntry& b : f.blocks()) {
    origins.insert({b.x, b.y, b.z});
    const PackedSparseBlock* slot = f.find(b.x, b.y, b.z);
    if (!slot || slot->data != b.data || slot->key != PackedSparseBlock::pack(b.x, b.y, b.z))
      return false;
  }
  return origins.size() == f.blocks().size();
}

}  // namespace

TEST(SparseField, BlocksHoldEightVoxelsAnAxis) {
  const std::size_t in_use = block_pool().counts().in_use;
  {
    Sparse f;
    voxel(f, 7, 7, 7) = 3;
    EXPECT_EQ(f.find(8, 0, 0), nullptr);
    EXPECT_EQ(f.find(0, 0, 0)->data[511], 3);
    EXPECT_EQ(&f.hash_insert(1, 2, 3), f.find(0, 0, 0)) << "the same slot again";
    f.clear();
    const float* data = f.hash_insert(0, 0, 0).data;
    EXPECT_TRUE(std::all_of(data, data + 512, [](float v) { return v == 0; })) << "recycled";
    const int end = Sparse::kMaxCoordinate;
    voxel(f, end, end, end) = 5;
    EXPECT_EQ(f.value(end, end, end), 5);
    EXPECT_EQ(f.value(end, end, 0), 0);
    EXPECT_EQ(block_pool().counts().in_use, in_use + 2);
  }
  EXPECT_EQ(block_pool().counts().in_use, in_use);
}

// Blocks whose origins are 1024 apart share their first slot in a map of 1024. Searches must pass
// over deleted slots. These must be used again, or in the end no unused slot would be left.
TEST(SparseField, BlocksMayComeAndGoForEver) {
  Sparse f;
  std::set<std::tuple<int, int, int>> stay;
  std::mt19937 engine(1);
  for (int round = 0; round < 200; ++round) {
    while (f.blocks().size() < 512) {
      const int place = static_cast<int>(engine() % 8192), y = 8 * static_cast<int>(engine() % 64);
      const int x = round % 2 ? 8 * place : 1024 * (place % 64);
      float& v = voxel(f, x, y, 0);
      if (v == 0) v = engine() % 512 ? 1 : 2;
      if (v == 2) stay.insert({x, y, 0});
    }
    f.clear_blocks_le(1);  // removes values equal to the threshold
    ASSERT_EQ(f.blocks().size(), stay.size());
    ASSERT_TRUE(consistent(f));
  }
  EXPECT_EQ(f.map_size(), 1024u);
}

TEST(SparseField, MapStaysHalfEmptyButCannotGrowInAParallelRegion) {
  const test::LogCapture log;
  Sparse f;
  insert_line(f, 512);
  EXPECT_EQ(f.map_size(), 1024u);
#pragma omp parallel num_threads(2)
  EXPECT_THROW(f.hash_insert(0, 8, 0), Exception);
  EXPECT_EQ(f.blocks().size(), 512u);
  f.hash_insert(0, 8, 0);
  EXPECT_EQ(f.map_size(), 2048u);
  f.hash_resize(5000);
  insert_line(f, 5000);
  EXPECT_EQ(f.map_size(), 16384u);
  EXPECT_TRUE(consistent(f));
}

// In every step all threads insert at once, and two of them insert each block. Chains of blocks
// with the same first slot lead all threads to the same free or deleted slot.
TEST(SparseField, ThreadsInsertTogether) {
  constexpr int kThreads = 4, kSteps = 200;
  const auto column = [](int step, int thread) { return 1024 * (2 * step + thread / 2); };
  Sparse f;
  for (int step = 0; step < kSteps / 2; ++step) f.hash_insert(column(step, 0), 8, 0);
  f.clear_blocks_le(0);
  std::barrier together(kThreads);
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (int step = 0; step < kSteps; ++step) {
        together.arrive_and_wait();
        f.hash_insert(column(step, t), 0, 0).data[t] += 1;
        const PackedSparseBlock* found = f.find(column(step, t), 0, 0);
        if (!found || found->data[t] != 1) ++wrong;
      }
    });
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(f.blocks().size(), std::size_t{2 * kSteps});
  EXPECT_TRUE(consistent(f));
  for (int step = 0; step < kSteps; ++step)
    for (int t = 0; t < kThreads; ++t)
      ASSERT_EQ(f.find(column(step, t), 0, 0)->data[t], 1) << step << " " << t;
}

TEST(SparseField, ProcessAndBox) {
  const test::ThreadCount threads(3);
  Sparse f;
  insert_line(f, 3);
  EXPECT_TRUE(min_bbox(f, 0).empty());
  voxel(f, 13, 22, 5) = -0.5f;
  EXPECT_EQ(min_bbox(f, 0.4f), (IntBox{{13, 22, 5}, {13, 22, 5}}));
  voxel(f, 16, 7, 1000) = 2;
  voxel(f, 23, 0, 1001) = 0.4f;
  EXPECT_EQ(min_bbox(f, 0.4f), (IntBox{{13, 7, 5}, {16, 22, 1000}})) << "above, not at";
  f.process(0.4f, 8, -1);
  EXPECT_EQ(f.value(16, 7, 1000), 8);
  EXPECT_EQ(f.value(23, 0, 1001), -1);
  EXPECT_EQ(f.value(13, 22, 5), -1);
}

TEST(SparseField, AddsToADenseFieldWhereBothLie) {
  Sparse f;
  for (const Vec3i& p : {Vec3i(10, 10, 10), Vec3i(17, 12, 19), Vec3i(40, 10, 10), Vec3i(0, 0, 0)}) {
    float* data = f.hash_insert(p[0], p[1], p[2]).data;
    for (int i = 0; i < 512; ++i) data[i] = static_cast<float>(i + p[0]);
  }
  for (const Vec3i& offset : {Vec3i(11, 9, 15), Vec3i(-3, -2, -5), Vec3i(100, 0, 0)}) {
    MField dense(kCpu, {7, 6, 9});
    m_set(dense, 0.5f);
    m_asxpy(offset, dense, 2, f);
    int wrong = 0, hits = 0;
    test::each_cell(dense.dims(), 0, [&](int i, int j, int k) {
      const Vec3i p = offset + Vec3i(i, j, k);
      const float v = p[0] < 0 || p[1] < 0 || p[2] < 0 ? 0 : f.value(p[0], p[1], p[2]);
      wrong += dense.read_cpu()(i, j, k) != 0.5f + 2 * v;
      hits += v != 0;
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(hits > 0, offset[0] != 100);
  }
}

TEST(SparseField, AxpyAndRaise) {
  Sparse z, x;
  voxel(x, 3, 4, 5) = 5;
  voxel(x, 800, 0, 0) = 2;
  voxel(z, 3, 4, 5) = 1;
  voxel(z, 64, 0, 0) = 9;
  sparse_axpy(z, 0.5f, x);
  EXPECT_EQ(z.value(3, 4, 5) + 100 * z.value(800, 0, 0) + 1000 * z.value(64, 0, 0), 9103.5f);

  // a x = 5 with y = 2 and z = 1 pending leaves 3 to come; y = 0 outside of the dense field.
  voxel(z, 3, 4, 5) = 1;
  Field<float> y(4, 4, 4);
  set(y, 2);
  const Vec3i offset(2, 2, 2);
  for (int run = 0; run < 2; ++run) {
    sparse_raise(z, 1, x, offset, y);
    EXPECT_EQ(z.value(3, 4, 5), 3);
    EXPECT_EQ(z.value(800, 0, 0), 2);
    EXPECT_EQ(z.value(3, 4, 6), 0);
  }
  y(1, 2, 3) = 7;
  sparse_raise(z, 1, x, offset, y);
  EXPECT_EQ(z.value(3, 4, 5), 3) << "never lowered";
}

}  // namespace nbx
