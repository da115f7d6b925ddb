// Fields, fields on both sides, and the pools.
#include "math/field.h"

#include <cmath>
#include <utility>

#include "math/field_operators.h"
#include "math/field_pool.h"
#include "math/mfield_operations.h"
#include "support/gpu_thread.h"
#include "support/support.h"
#include "util/exception.h"
#include "util/memory.h"

// Makes an impossible allocation fail as it does without sanitizers.
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
  EXPECT_EQ(f.capacity(), 150u) << "room for the next growth";

  float foreign[8];
  Field<float> view = Field<float>::view(foreign, 2, 2, 2);
  view.swap(f);
  EXPECT_EQ(f.data(), foreign);
  f.resize(3, 3, 3);
  EXPECT_TRUE(f.owns_memory()) << "the foreign memory is left alone";

  EXPECT_THROW(f.resize(1 << 20, 1 << 20, 1 << 20), std::bad_alloc);
  EXPECT_EQ(f.count(), 0u);
}

// Of fields that grow in turn, as those of a growing container do, nothing stays resident but what
// they hold.
TEST(Field, GrowthLeavesNoGaps) {
  const auto held = [bytes = field_bytes()] { return field_bytes() - bytes; };
  const auto resident = [bytes = resident_memory()] { return resident_memory() - bytes; };
  std::vector<Field<float>> fields(16);
  for (int n = 30; n < 95; n += 5)
    for (Field<float>& field : fields) {
      field.resize(n, n, n);
      std::fill_n(field.data(), field.count(), 1.0f);
    }
  EXPECT_LT(resident(), held() * 6 / 5 + (2 << 20));
}

TEST(FieldPool, HandsOutTheLastReleasedFirstAndDestroysTheUnused) {
  field_pool().release_unused();
  block_pool().release_unused();
  const auto before = field_pool().counts();
  Field<float>*a = field_pool().acquire(), *b = field_pool().acquire();
  a->resize(10, 10, 10);
  field_pool().release(a);
  field_pool().release(b);
  EXPECT_EQ(acquire_field().get(), b);
  {
    const FieldHandle first = acquire_field(Vec3i(9, 9, 9)), copy = first;
    EXPECT_EQ(first.get(), a) << "large enough";
    EXPECT_EQ(acquire_field().get(), b);
    EXPECT_EQ(field_pool().counts().in_use, before.in_use + 1);
  }
  EXPECT_EQ(field_pool().counts().in_use, before.in_use);
  EXPECT_EQ(field_pool().counts().known, before.known + 2);

  const FieldHandle held = acquire_field();
  SparseBlock* const block = block_pool().acquire();
  block_pool().release(block_pool().acquire());
  field_pool().release_unused();
  block_pool().release_unused();
  EXPECT_EQ(field_pool().counts().known, before.known + 1) << "the free one is destroyed";
  EXPECT_EQ(block_pool().counts().known, block_pool().counts().in_use);
  block_pool().release(block);
  block_pool().release_unused();
}

TEST(FieldPoolDeathTest, UnknownAddressEndsTheProcess) {
  const test::LogCapture log;
  Field<float> stranger;
  EXPECT_EXIT(field_pool().release(&stranger), testing::KilledBySignal(SIGABRT), "");
  EXPECT_TRUE(log.contains("FATAL: releasing unknown field"));
}

// MFields on both sides, with the software device.
namespace {

void fill(MField& field, const Vec3i& dims, unsigned seed) {
  field.assign(test::random_field(dims, seed));
}

// The contents of the field, on either side.
Field<float> contents(const MField& field) {
  MField copy;
  copy.assign(field);
  Field<float> values;
  if (!copy.empty()) values.copy(copy.read_cpu());
  return values;
}

}  // namespace

TEST(MField, ResizeOffsetShiftsOnBothSides) {
  test::on_gpu_thread([] {
    const Vec3i old(5, 4, 3);
    const struct {
      Vec3i offset, dims;
    } cases[] = {{{0, -2, 1}, old}, {{-3, -2, -1}, {9, 9, 9}}, {{2, 1, 1}, {2, 2, 1}},
                 {{0, 0, -3}, old}, {{-1, 3, 2}, {20, 1, 2}},  {{0, 0, 0}, {0, 2, 2}}};
    for (const auto& c : cases)
      for (const float edge : {0.0f, 2.5f})
        for (const Location side : {kCpu, kGpu}) {
          MField field;
          fill(field, old, 1);
          const Field<float> before = contents(field);
          field.move_to(side);
          field.resize_offset(c.offset, c.dims, edge);
          EXPECT_EQ(field.location(), side);
          const Field<float> after = contents(field);
          ASSERT_EQ(field.dims(), c.dims);
          int wrong = 0;
          test::each_cell(after.dims(), 0, [&](int i, int j, int k) {
            const Vec3i from = Vec3i(i, j, k) + c.offset;
            const bool inside = IntBox{{0, 0, 0}, old - Vec3i(1, 1, 1)}.contains(from);
            wrong += after(i, j, k) != (inside ? before(from[0], from[1], from[2]) : edge);
          });
          EXPECT_EQ(wrong, 0) << "case " << &c - cases << " on the GPU " << (side == kGpu)
                              << " fill " << edge;
        }
  });
}

TEST(MField, AssignAndSwapBetweenAllSides) {
  test::on_gpu_thread([] {
    for (const Location a_side : {kCpu, kGpu})
      for (const Location b_side : {kCpu, kGpu}) {
        MField a, b;
        fill(a, {3, 4, 5}, 1);
        fill(b, {1, 1, 5}, 2);
        const Field<float> a_before = contents(a), b_before = contents(b);
        a.move_to(a_side);
        b.move_to(b_side);
        const FieldHandle a_shared = a.cpu_handle(), b_shared = b.cpu_handle();
        a.swap(b);
        if (a_side == kCpu && b_side == kCpu) {
          EXPECT_EQ(a.cpu_handle(), a_shared) << "a holder of the handle sees the new contents";
          EXPECT_EQ(b.cpu_handle(), b_shared);
        }
        EXPECT_EQ(a.location(), a_side);
        EXPECT_EQ(b.location(), a_side);
        EXPECT_TRUE(test::same_bits(contents(a), b_before));
        EXPECT_TRUE(test::same_bits(contents(b), a_before));

        b.move_to(b_side);
        a.assign(b);
        EXPECT_EQ(a.location(), a_side);
        EXPECT_EQ(b.location(), b_side);
        m_set(b, 0);
        EXPECT_TRUE(test::same_bits(contents(a), a_before)) << "a copy of its own";

        MField none;
        a.swap(none);
        EXPECT_TRUE(a.empty());
        EXPECT_TRUE(test::same_bits(contents(none), a_before));
      }
  });
}

TEST(MField, MovesWhatIsReadAndNothingElse) {
  test::on_gpu_thread([] {
    const test::LogCapture log;
    MField field;
    fill(field, {5, 3, 2}, 1);
    const Field<float> before = contents(field);
    auto moved = [&, seen = MField::moves()]() mutable {
      return MField::moves() - std::exchange(seen, MField::moves());
    };
    field.overwrite_gpu();
    EXPECT_EQ(moved(), 0u);
    EXPECT_EQ(field.location(), kGpu);
    EXPECT_TRUE(std::isnan(field.read_cpu()(4, 2, 1))) << "new memory of the device";
    EXPECT_EQ(moved(), 1u);

    field.assign(before);
    EXPECT_EQ(std::as_const(field).read_gpu().dims(), before.dims());
    EXPECT_TRUE(test::same_bits(field.write_cpu(), before));
    EXPECT_EQ(moved(), 2u);
    field.read_gpu();
    EXPECT_EQ(moved(), 1u);
    EXPECT_EQ(field.overwrite_cpu().dims(), before.dims());
    EXPECT_EQ(software_device::bytes_in_use(), 0u);
    field.move_to(kGpu);
    EXPECT_EQ(field.overwrite_cpu({7, 1, 1}).dims(), Vec3i(7, 1, 1));
    EXPECT_EQ(field.location(), kCpu);
    EXPECT_EQ(moved(), 1u);
    EXPECT_EQ(log.count("moving mfield from"), 5);
    field.release();
    EXPECT_THROW(field.read_cpu(), Exception);
    EXPECT_THROW(field.overwrite_cpu(), Exception);
  });
}

// Each memory call of a device body fails once, with and without an in-place operand. The CPU's
// result must then be what the CPU gives alone.
TEST(MField, HalfRunDeviceBodyIsRepeatedOnTheCpu) {
  test::on_gpu_thread([] {
    const test::LogCapture log;
    const auto kernel = [](CUDAField& dst, const CUDAField& x, const CUDAField& y) {
      const CUDAConstFieldPtr px = x.ptr(), py = y.ptr();
      const CUDAFieldPtr d = dst.ptr();
      for (int row = 0; row < d.ny * d.nz; ++row) {
        if (row == d.ny) cuda_check(cuda::memset(d.data + row * d.pitch, 0, sizeof(float)));
        for (int i = 0; i < d.nx; ++i)
          d.data[row * d.pitch + i] = 2 * px.data[row * px.pitch + i] + py.data[row * py.pitch + i];
      }
      cuda_check(cuda::memcpy(d.data, d.data, 0, cuda::CopyKind::kDeviceToDevice));
    };
    const auto operation = [&](MField& dst, const MField& x, const MField& y) {
      try_gpu([&] { on_gpu(kernel, dst, x, y); },
              [&] { on_cpu([](auto& d, auto& fx, auto& fy) { axpy(d, 2, fx, fy); }, dst, x, y); });
    };
    for (const bool in_place : {false, true})
      for (int call = 0; call <= 7; ++call) {
        MField x, y, other;
        fill(x, {5, 4, 3}, 1);
        fill(y, {5, 4, 3}, 2);
        fill(other, {5, 4, 3}, 3);
        Field<float> expected(5, 4, 3);
        axpy(expected, 2, x.read_cpu(), y.read_cpu());
        cuda_use_flags().use_gpu = true;
        software_device::fail_call(call, cuda::kErrorMemoryAllocation);
        operation(in_place ? y : other, x, y);
        EXPECT_EQ(cuda_use_flags().on_gpu(), call == 0) << "call " << call << " can't fail";
        EXPECT_EQ((in_place ? y : other).location(), call == 0 ? kGpu : kCpu);
        EXPECT_TRUE(test::same_bits(contents(in_place ? y : other), expected)) << "call " << call;
      }
  });
}

TEST(MField, FailureLosesNothing) {
  test::on_gpu_thread([] {
    MField field;
    fill(field, {8, 8, 8}, 1);
    const Field<float> before = contents(field);
    // Each memory call of the upload fails once.
    for (const int call : {1, 2}) {
      software_device::fail_call(call, cuda::kErrorMemoryAllocation);
      EXPECT_THROW(field.read_gpu(), CUDAException);
      EXPECT_EQ(field.location(), kCpu);
      EXPECT_TRUE(test::same_bits(contents(field), before));
      EXPECT_EQ(software_device::bytes_in_use(), 0u) << "no half-filled GPU side stays";
    }
  });
}

}  // namespace nbx
