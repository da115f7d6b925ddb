// Managed fields on both sides, over the software device.
#include "math/mfield.h"

#include <thread>

#include "math/mfield_operations.h"
#include "support/support.h"
#include "util/cuda_use_flags.h"
#include "util/exception.h"
#include "util/software_device.h"

namespace nbx {

namespace {

// Runs on a thread of its own that has selected the software device.
template <class Work>
void on_gpu_thread(Work work) {
  software_device::enable(true);
  std::thread([&] {
    set_device(cuda_use_flags(), 0);
    ASSERT_TRUE(cuda_use_flags().on_gpu());
    work();
  }).join();
  EXPECT_EQ(software_device::bytes_in_use(), 0u) << "device memory is given back";
  software_device::enable(false);
}

void fill(MField& field, const Vec3i& dims, unsigned seed) {
  Field<float> values(dims[0], dims[1], dims[2]);
  test::fill_random(values, seed);
  field.assign(values);
}

// The contents, wherever the field lies.
Field<float> contents(const MField& field) {
  MField copy;
  copy.assign(field);
  Field<float> values;
  if (!copy.empty()) values.copy(copy.cpu_field());
  return values;
}

}  // namespace

TEST(MField, MovesWithItsContents) {
  on_gpu_thread([] {
    const test::LogCapture log;
    const std::size_t in_use = field_pool().counts().in_use;
    MField field;
    EXPECT_THROW(field.cpu_field(), Exception) << "there is none yet";
    field.move_to(kGpu);
    field.move_to(kCpu);
    EXPECT_EQ(log.count("moving mfield"), 0);

    for (const Vec3i& dims : {Vec3i(7, 5, 3), Vec3i(1, 1, 1), Vec3i(64, 2, 2)}) {
      fill(field, dims, 1);
      const Field<float> before = contents(field);
      EXPECT_EQ(field.gpu_field().dims(), dims);
      EXPECT_EQ(field.location(), kGpu);
      EXPECT_EQ(field_pool().counts().in_use, in_use) << "the CPU side is back in the pool";
      EXPECT_GT(software_device::bytes_in_use(), 0u);
      EXPECT_TRUE(test::same_bits(field.cpu_field(), before));
      EXPECT_EQ(software_device::bytes_in_use(), 0u);
    }
    EXPECT_EQ(log.count("moving mfield from cpu to gpu\n"), 3);
    EXPECT_EQ(log.count("moving mfield from gpu to cpu\n"), 3);
    field.move_to(kGpu);
    field.zero();
    EXPECT_EQ(field.location(), kGpu);
    EXPECT_EQ(m_sum(field), 0);
  });
}

TEST(MField, ResizeOffsetShiftsOnBothSides) {
  on_gpu_thread([] {
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
          EXPECT_EQ(wrong, 0) << "case " << &c - cases << " side " << side << " fill " << edge;
        }
  });
}

TEST(MField, AssignAndSwapBetweenAllSides) {
  on_gpu_thread([] {
    for (const Location a_side : {kCpu, kGpu})
      for (const Location b_side : {kCpu, kGpu}) {
        MField a, b;
        fill(a, {3, 4, 5}, 1);
        fill(b, {6, 2, 2}, 2);
        const Field<float> a_before = contents(a), b_before = contents(b);
        a.move_to(a_side);
        b.move_to(b_side);
        const FieldHandle a_shared = a.cpu_handle(), b_shared = b.cpu_handle();
        a.swap(b);
        if (a_side == kCpu && b_side == kCpu) {
          EXPECT_EQ(a.cpu_handle(), a_shared) << "who shares a field sees the new contents";
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
      }
  });
}

TEST(MField, FailureLosesNothing) {
  on_gpu_thread([] {
    MField field;
    fill(field, {8, 8, 8}, 1);
    const Field<float> before = contents(field);
    // Each memory call of the way up fails once.
    for (const int call : {1, 2}) {
      software_device::fail_call(call, cuda::kErrorMemoryAllocation);
      EXPECT_THROW(field.gpu_field(), CUDAException);
      EXPECT_EQ(field.location(), kCpu);
      EXPECT_TRUE(test::same_bits(contents(field), before));
      EXPECT_EQ(software_device::bytes_in_use(), 0u) << "no half-filled GPU side stays";
    }
  });
}

}  // namespace nbx
