// The CUDA layer on the software device, and the rule that chooses between GPU and CPU.
#include <cstdlib>
#include <thread>

#include "support/support.h"
#include "util/cuda_host_util.h"
#include "util/cuda_use_flags.h"
#include "util/device/software_device.h"

namespace nbx {

namespace {

class CudaLayer : public testing::Test {
 protected:
  CudaLayer() { software_device::enable(true); }
  ~CudaLayer() override { software_device::enable(false); }
};

TEST_F(CudaLayer, RecordsBelongToThreads) {
  const test::LogCapture log;
  std::shared_ptr<CudaUseFlags> seen;
  // Successive threads often get the same id; none may inherit another one's device.
  for (int i = 0; i < 3; ++i)
    std::thread([&] {
      EXPECT_EQ(cuda_use_flags().device, -1);
      set_device(cuda_use_flags(), 0);
      EXPECT_TRUE(cuda_use_flags().on_gpu());
      seen = cuda_use_flags(std::this_thread::get_id());
      EXPECT_EQ(seen.get(), &cuda_use_flags());
    }).join();
  EXPECT_TRUE(seen->on_gpu()) << "a handle outlives the thread";
  EXPECT_LE(software_device::resets(), 1u) << "a device is set up once";
}

TEST_F(CudaLayer, FailureOnTheGpuRepeatsOnTheCpuAndStaysThere) {
  std::thread([] {
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
    EXPECT_EQ(cuda::get_last_error(), cuda::kSuccess) << "the runtime's error is cleared";
    EXPECT_THROW(try_gpu([] {}, [] { throw Exception("the CPU's own"); }), Exception);
  }).join();
}

// The number of resets by the first selection of a device on which the process already has `bytes`.
int resets_of_first_selection(std::size_t bytes) {
  software_device::enable(true);
  void* memory = nullptr;
  cuda_check(cuda::malloc(&memory, bytes));
  set_device(cuda_use_flags(), 0);
  set_device(cuda_use_flags(), -1);
  set_device(cuda_use_flags(), 0);
  const bool kept = software_device::bytes_in_use() == bytes && cuda_use_flags().on_gpu();
  return kept ? static_cast<int>(software_device::resets()) : -1;
}

TEST(CudaLayerDeathTest, FirstSelectionResetsOnlyADeviceThatNobodyUses) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // processes that have selected no device yet
  EXPECT_EXIT(std::exit(resets_of_first_selection(0)), testing::ExitedWithCode(1), "");
  EXPECT_EXIT(std::exit(resets_of_first_selection(16)), testing::ExitedWithCode(0), "");
}

}  // namespace

}  // namespace nbx
