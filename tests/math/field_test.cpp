// Fields, the checks of their operands, and the pools.
#include "math/field.h"

#include <csignal>

#include "math/field_checks.h"
#include "math/field_pool.h"
#include "support/support.h"
#include "util/exception.h"

// Lets an impossible allocation fail as it does without sanitizers.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

namespace nbx {

TEST(Field, ResizeKeepsTheLargestBlock) {
  const std::uint64_t before = field_allocations();
  Field<float> f(-3, 5, 5);
  EXPECT_EQ(f.dims(), Vec3i(0, 5, 5));
  f.resize(4, 5, 6);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(f.data()) % 64, 0u);
  f(3, 4, 5) = 7;
  EXPECT_EQ(f[119], 7.0f) << "x runs fastest";
  const float* data = f.data();
  f.resize(2, 2, 2);
  f.resize(120, 1, 1);
  EXPECT_EQ(f.data(), data);
  EXPECT_EQ(field_allocations(), before + 1);
  f.resize(121, 1, 1);
  EXPECT_EQ(f.capacity(), 121u);

  float foreign[8];
  Field<float> view = Field<float>::view(foreign, 2, 2, 2);
  view.swap(f);
  EXPECT_EQ(f.data(), foreign);
  f.resize(3, 3, 3);
  EXPECT_TRUE(f.owns_memory()) << "the foreign memory is left alone";

  const test::LogCapture log;
  EXPECT_THROW(f.resize(1 << 20, 1 << 20, 1 << 20), std::bad_alloc);
  EXPECT_EQ(log.count("Failed to allocate field memory"), 1);
  EXPECT_EQ(f.count(), 0u);
}

TEST(FieldChecks, RefuseFieldsThatDontFit) {
  const Field<float> U(5, 4, 3), V(4, 5, 3), W(4, 4, 4), flat(16, 3, 1);
  EXPECT_EQ(check_mac(U, V, W), Vec3i(4, 4, 3));
  EXPECT_THROW(check_mac(V, V, W), FieldDimensionMismatchException);
  EXPECT_THROW(check_mac(U, U, W), FieldDimensionMismatchException);
  EXPECT_THROW(check_mac(U, V, V), FieldDimensionMismatchException);
  EXPECT_THROW(check_mac(U, V, W, flat), FieldDimensionMismatchException);
}

TEST(FieldPool, HandsOutTheLastReleasedFirstAndDestroysTheUnused) {
  field_pool().release_unused();
  block_pool().release_unused();
  const auto before = field_pool().counts();
  Field<float>*a = field_pool().acquire(), *b = field_pool().acquire();
  a->resize(10, 10, 10);
  field_pool().release(b);
  field_pool().release(a);
  {
    const FieldHandle first = acquire_field(Vec3i(9, 9, 9)), copy = first;
    EXPECT_EQ(first.get(), a);
    EXPECT_EQ(acquire_field().get(), b);
    EXPECT_EQ(field_pool().counts().in_use, before.in_use + 1);
  }
  EXPECT_EQ(field_pool().counts().in_use, before.in_use);
  EXPECT_EQ(field_pool().counts().known, before.known + 2);

  const test::LogCapture log;
  const FieldHandle held = acquire_field();
  SparseBlock* const block = block_pool().acquire();
  block_pool().release(block_pool().acquire());
  mem_stats();
  field_pool().release_unused();
  block_pool().release_unused();
  EXPECT_EQ(field_pool().counts().known, before.known + 1) << "the free one is destroyed";
  EXPECT_EQ(block_pool().counts().known, block_pool().counts().in_use);
  const std::string in_use = std::to_string(before.in_use + 1);
  EXPECT_TRUE(log.contains("mem stats: " + in_use + "/" + std::to_string(before.known + 2) +
                           " dense fields, 1/2 sparse blocks, "))
      << log.text();
  EXPECT_TRUE(log.contains("FieldPool(4)::release_unused fields " + in_use + ", free 0\n"));
  block_pool().release(block);
  block_pool().release_unused();
}

TEST(FieldPoolDeathTest, UnknownAddressEndsTheProcess) {
  const test::LogCapture log;
  Field<float> stranger;
  EXPECT_EXIT(field_pool().release(&stranger), testing::KilledBySignal(SIGABRT), "");
  EXPECT_TRUE(log.contains("FATAL: releasing unknown field"));
}

}  // namespace nbx
