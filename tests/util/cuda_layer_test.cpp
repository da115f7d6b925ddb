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

TEST_F(CudaLayer, FailedCallBecomesLineAndException) {
  const test::LogCapture log;
  cuda_check_log_only(cuda::kErrorMemoryAllocation);
  EXPECT_THROW(cuda_check(cuda::kErrorInvalidValue), CUDAException);
  EXPECT_EQ(log.count("CUDAError("), 2);
  EXPECT_TRUE(log.contains("CUDAError(1) in " + std::string(__FILE__) + "(" +
                           std::to_string(__LINE__ - 3) + "): " + cuda::get_error_string(1)));
}

TEST_F(CudaLayer, RecordsBelongToThreads) {
  const test::LogCapture log;
  std::shared_ptr<CudaUseFlags> seen;
  // Threads that follow each other often get the same id; none may find another's device.
  for (int i = 0; i < 3; ++i)
    on_new_thread([&] {
      EXPECT_EQ(cuda_use_flags().device, -1);
      set_device(cuda_use_flags(), 0);
      EXPECT_TRUE(cuda_use_flags().on_gpu());
      seen = cuda_use_flags(std::this_thread::get_id());
      EXPECT_EQ(seen.get(), &cuda_use_flags());
    });
  EXPECT_TRUE(seen->on_gpu()) << "a handle outlives the thread";
  EXPECT_EQ(log.count("init'ing cuda_use_flags for thread "), 3);
  EXPECT_LE(software_device::resets(), 1u) << "a device is set up once";
}

TEST_F(CudaLayer, NoDeviceLeavesTheThreadOnTheCpu) {
  software_device::enable(false);
  int count = -1;
  ASSERT_EQ(cuda::get_device_count(&count), cuda::kSuccess);
  if (count > 0) GTEST_SKIP() << "this machine has a device";
  on_new_thread([] {
    const test::LogCapture log;
    CudaUseFlags& flags = cuda_use_flags();
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
    EXPECT_EQ(cpu, 0);
    software_device::fail_call(1, cuda::kErrorMemoryAllocation);
    operation();
    operation();
    EXPECT_EQ(gpu, 2);
    EXPECT_EQ(cpu, 2);
    EXPECT_FALSE(cuda_use_flags().use_gpu);
    EXPECT_EQ(log.count("CUDAException(2) in "), 1);
    EXPECT_EQ(cuda::get_last_error(), cuda::kSuccess) << "the runtime's error is cleared";
    EXPECT_THROW(try_gpu([] {}, [] { throw Exception("the CPU's own"); }), Exception);
  });
}

}  // namespace

}  // namespace nbx
