// A thread that works on the software device.
#pragma once

#include <thread>

#include <gtest/gtest.h>

#include "math/field_pool.h"
#include "util/cuda_use_flags.h"
#include "util/device/software_device.h"

namespace nbx::test {

/// Runs work() on a thread of its own that has selected the software device, and checks that it
/// gives back all memory.
template <class Work>
void on_gpu_thread(Work work) {
  software_device::enable(true);
  const std::size_t in_use = field_pool().counts().in_use;
  std::thread([&] {
    set_device(cuda_use_flags(), 0);
    ASSERT_TRUE(cuda_use_flags().on_gpu());
    work();
  }).join();
  EXPECT_EQ(software_device::bytes_in_use(), 0u) << "device memory is given back";
  EXPECT_EQ(field_pool().counts().in_use, in_use) << "and so are pooled fields";
  software_device::enable(false);
}

}  // namespace nbx::test
