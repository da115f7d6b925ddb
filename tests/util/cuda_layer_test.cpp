// The CUDA layer over the software device, and the rule that chooses between GPU and CPU.
#include <thread>

#include "support/support.h"
#include "util/cuda_host_util.h"
#include "util/cuda_use_flags.h"
#include "util/software_device.h"

namespace nbx {

namespace {

class CudaLayer : public testing::Test {
 protected:
  CudaLayer() { software_device::enable(true); }
  ~CudaLayer() override {
    software_device::set_memory(std::size_t{1} << 30);
    software_device::enable(false);
  }

  // Runs on a thread without a record.
  template <class Work>
  static void on_new_thread(Work work) {
    std::thread(work).join();
  }
};

TEST_F(CudaLayer, CopiesAndFillsPitchedMemory) {
  // A box of 3 x 2 x 2 floats out of a host grid of 7 x 5 x 4, to position (1, 2, 1) on the device.
  float host[7 * 5 * 4], back[7 * 5 * 4];
  for (int i = 0; i < 140; ++i) host[i] = static_cast<float>(i);
  const cuda::PitchedPtr host_grid{host, 28, 28, 5}, back_grid{back, 28, 28, 5};
  cuda::PitchedPtr device;
  ASSERT_EQ(cuda::malloc_3d(&device, {28, 5, 4}), cuda::kSuccess);
  EXPECT_GE(device.pitch, 28u);
  const cuda::Extent all{28, 5, 4}, box{12, 2, 2};
  const auto down = cuda::CopyKind::kDeviceToHost, up = cuda::CopyKind::kHostToDevice;
  ASSERT_EQ(cuda::memcpy_3d({device, back_grid, {}, {}, all, down}), cuda::kSuccess);
  EXPECT_TRUE(std::isnan(back[139])) << "new memory holds what nobody wrote";
  ASSERT_EQ(cuda::memset_3d(device, 0, all), cuda::kSuccess);
  ASSERT_EQ(cuda::memcpy_3d({host_grid, device, {8, 1, 2}, {4, 2, 1}, box, up}), cuda::kSuccess);
  ASSERT_EQ(cuda::memcpy_3d({device, back_grid, {}, {}, all, down}), cuda::kSuccess);
  for (int k = 0; k < 4; ++k)
    for (int j = 0; j < 5; ++j)
      for (int i = 0; i < 7; ++i) {
        const bool inside = i >= 1 && i < 4 && j >= 2 && j < 4 && k >= 1 && k < 3;
        const float expected = inside ? host[(i + 1) + 7 * ((j - 1) + 5 * (k + 1))] : 0;
        EXPECT_EQ(back[i + 7 * (j + 5 * k)], expected) << i << " " << j << " " << k;
      }
  EXPECT_EQ(cuda::free(device.data), cuda::kSuccess);
  EXPECT_EQ(software_device::bytes_in_use(), 0u);
}

TEST_F(CudaLayer, RefusesWhatADeviceWould) {
  software_device::set_memory(1024);
  float host[4] = {};
  void *a = nullptr, *b = nullptr;
  ASSERT_EQ(cuda::malloc(&a, 1000), cuda::kSuccess);
  EXPECT_EQ(cuda::malloc(&b, 25), cuda::kErrorMemoryAllocation);
  EXPECT_EQ(b, nullptr);
  EXPECT_EQ(cuda::get_last_error(), cuda::kErrorMemoryAllocation);
  EXPECT_EQ(cuda::get_last_error(), cuda::kSuccess);
  char* end = static_cast<char*>(a) + 1000;
  const auto up = cuda::CopyKind::kHostToDevice, down = cuda::CopyKind::kDeviceToHost;
  EXPECT_EQ(cuda::memcpy(end - 16, host, 16, up), cuda::kSuccess);
  EXPECT_EQ(cuda::memcpy(end - 15, host, 16, up), cuda::kErrorInvalidValue);
  EXPECT_EQ(cuda::memcpy(end - 16, host, 16, down), cuda::kErrorInvalidValue);
  EXPECT_EQ(cuda::memset(host, 0, 16), cuda::kErrorInvalidValue);
  EXPECT_EQ(cuda::free(host), cuda::kErrorInvalidValue);
  EXPECT_EQ(cuda::set_device(1), cuda::kErrorInvalidDevice);

  software_device::fail_call(2, cuda::kErrorMemoryAllocation);
  EXPECT_EQ(cuda::memset(a, 0, 16), cuda::kSuccess);
  EXPECT_EQ(cuda::memset(a, 0, 16), cuda::kErrorMemoryAllocation);
  EXPECT_EQ(cuda::memset(a, 0, 16), cuda::kSuccess);

  std::size_t free_bytes = 0, total = 0;
  EXPECT_EQ(cuda::mem_get_info(&free_bytes, &total), cuda::kSuccess);
  EXPECT_EQ(free_bytes, 24u);
  EXPECT_EQ(total, 1024u);
  EXPECT_EQ(cuda::device_reset(), cuda::kSuccess);
  EXPECT_EQ(software_device::bytes_in_use(), 0u);
}

TEST_F(CudaLayer, FailedCallBecomesLineAndException) {
  const test::LogCapture log;
  cuda_check(cuda::kSuccess);
  cuda_check_log_only(cuda::kErrorMemoryAllocation);
  const int line = __LINE__ + 2;
  try {
    cuda_check(cuda::kErrorInvalidValue);
    FAIL();
  } catch (const CUDAException& e) {
    EXPECT_EQ(e.code(), cuda::kErrorInvalidValue);
    EXPECT_STREQ(e.file(), __FILE__);
    EXPECT_EQ(e.line(), line);
  }
  EXPECT_EQ(log.count("CUDAError("), 2);
  EXPECT_TRUE(log.contains("CUDAError(1) in " + std::string(__FILE__) + "(" + std::to_string(line) +
                           "): " + cuda::get_error_string(1)));
}

TEST_F(CudaLayer, RecordsBelongToThreads) {
  const test::LogCapture log;
  std::shared_ptr<CudaUseFlags> seen;
  // Threads that follow each other often get the same id; none may find another's device.
  for (int i = 0; i < 3; ++i)
    on_new_thread([&] {
      EXPECT_FALSE(cuda_use_flags().on_gpu());
      EXPECT_EQ(cuda_use_flags().device, -1);
      EXPECT_TRUE(cuda_use_flags().use_gpu);
      set_device(cuda_use_flags(), 0);
      EXPECT_TRUE(cuda_use_flags().on_gpu());
      seen = cuda_use_flags(std::this_thread::get_id());
      EXPECT_EQ(seen.get(), &cuda_use_flags());
    });
  EXPECT_TRUE(seen->on_gpu()) << "a handle outlives the thread";
  EXPECT_EQ(log.count("init'ing cuda_use_flags for thread "), 3);
  EXPECT_LE(software_device::resets(), 1u) << "a device is set up once";

  // Another thread may ask first.
  std::atomic<bool> asked{false};
  std::thread late([&] {
    while (!asked) std::this_thread::yield();
    EXPECT_EQ(cuda_use_flags().device, 7);
  });
  cuda_use_flags(late.get_id())->device = 7;
  asked = true;
  late.join();
  EXPECT_EQ(log.count("init'ing cuda_use_flags for thread "), 4);
}

TEST_F(CudaLayer, NoDeviceLeavesTheThreadOnTheCpu) {
  software_device::enable(false);
  int count = -1;
  ASSERT_EQ(cuda::get_device_count(&count), cuda::kSuccess);
  if (count > 0) GTEST_SKIP() << "this machine has a device";
  on_new_thread([] {
    const test::LogCapture log;
    CudaUseFlags& flags = cuda_use_flags();
    set_device(flags, -1);
    EXPECT_FALSE(log.contains("CUDA"));
    EXPECT_TRUE(flags.use_gpu);
    set_device(flags, 0);
    EXPECT_EQ(flags.device, -1);
    EXPECT_FALSE(flags.use_gpu);
    EXPECT_TRUE(log.contains("CUDAException("));
  });
}

TEST_F(CudaLayer, FailureOnTheGpuRepeatsOnTheCpuAndStaysThere) {
  on_new_thread([] {
    const test::LogCapture log;
    set_device(cuda_use_flags(), 0);
    int gpu = 0, cpu = 0;
    void* memory = nullptr;
    const auto operation = [&] {
      try_gpu(
          [&] {
            ++gpu;
            cuda_check(cuda::malloc(&memory, 16));
            cuda_check(cuda::free(memory));
          },
          [&] { ++cpu; });
    };
    operation();
    EXPECT_EQ(gpu, 1);
    EXPECT_EQ(cpu, 0);
    software_device::fail_call(1, cuda::kErrorMemoryAllocation);
    operation();
    operation();
    EXPECT_EQ(gpu, 2);
    EXPECT_EQ(cpu, 2);
    EXPECT_FALSE(cuda_use_flags().use_gpu);
    EXPECT_EQ(cuda_use_flags().device, 0);
    EXPECT_EQ(log.count("CUDAException(2) in "), 1);
    EXPECT_EQ(cuda::get_last_error(), cuda::kSuccess) << "the runtime's error is cleared";
    try_gpu(no_kernel, [&] { ++cpu; });
    EXPECT_EQ(cpu, 3);
    EXPECT_THROW(try_gpu([] {}, [] { throw Exception("the CPU's own"); }), Exception);
  });
}

}  // namespace

}  // namespace nbx
