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

using Sparse = SparseField<float, 3>;

float& voxel(Sparse& f, int x, int y, int z) {
  return f.hash_insert(x, y, z).data[Sparse::voxel_index(x & 7, y & 7, z & 7)];
}

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

TEST(SparseField, RemovedBlocksLeaveTheChainWhole) {
  // Origins 1024 apart share their first slot in a map of 1024.
  Sparse f;
  for (int i = 0; i < 4; ++i) voxel(f, 1024 * i, 0, 0) = i % 2 ? 1.0f : -1.0f;
  const PackedSparseBlock *gone = f.find(0, 0, 0), *last = f.find(3072, 0, 0);
  f.clear_blocks_le(0);
  EXPECT_EQ(f.blocks().size(), 2u);
  EXPECT_EQ(f.find(2048, 0, 0), nullptr);
  EXPECT_EQ(f.find(3072, 0, 0), last) << "behind two deleted slots";
  EXPECT_EQ(&f.hash_insert(4096, 0, 0), gone) << "a deleted slot serves again";
  EXPECT_TRUE(consistent(f));
  f.clear_blocks_le(1);
  EXPECT_TRUE(f.empty()) << "the threshold itself doesn't stay";
}

// Without care, deleted slots would take the place of all unused ones, at which searches end.
TEST(SparseField, BlocksMayComeAndGoForEver) {
  Sparse f;
  voxel(f, 0, 0, 0) = 1;
  std::mt19937 engine(1);
  std::uniform_int_distribution<int> coordinate(0, Sparse::kMaxCoordinate);
  for (int round = 0; round < 200; ++round) {
    while (f.blocks().size() < 512)
      f.hash_insert(coordinate(engine), coordinate(engine), coordinate(engine));
    f.clear_blocks_le(0);
    EXPECT_EQ(f.blocks().size(), 1u);
  }
  EXPECT_EQ(f.map_size(), 1024u);
  EXPECT_TRUE(consistent(f));
}

TEST(SparseField, MapStaysHalfEmptyButCannotGrowInAParallelRegion) {
  const test::LogCapture log;
  Sparse f;
  insert_line(f, 512);
  EXPECT_EQ(f.map_size(), 1024u);
  int refused = 0;
#pragma omp parallel num_threads(2) reduction(+ : refused)
  {
    try {
      f.hash_insert(0, 8, 0);
    } catch (const Exception&) {
      ++refused;
    }
  }
  EXPECT_EQ(refused, 2);
  EXPECT_EQ(log.count("hash_resize: new 0 blocks 512 map 1024\n"), 2);
  EXPECT_EQ(f.blocks().size(), 512u);
  f.hash_insert(0, 8, 0);
  EXPECT_EQ(f.map_size(), 2048u);
  f.hash_resize(5000);
  insert_line(f, 5000);
  EXPECT_EQ(f.map_size(), 16384u);
  EXPECT_TRUE(consistent(f));
}

// In every step all threads insert at once, each block by two of them. Chains of blocks with the
// same first slot lead all threads to the same free or deleted slot.
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
      wrong += dense.cpu_field()(i, j, k) != 0.5f + 2 * v;
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
