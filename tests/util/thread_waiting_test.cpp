#include "util/thread_waiting.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <omp.h>
#include <sched.h>
#include <unistd.h>

#include "util/processor_wait.h"

namespace nbx {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

void compute(milliseconds time) {
  for (const auto end = Clock::now() + time; Clock::now() < end;) {
  }
}

bool within_seconds(int seconds, const std::function<bool()>& holds) {
  for (const auto end = Clock::now() + std::chrono::seconds(seconds); Clock::now() < end;) {
    if (holds()) return true;
    std::this_thread::sleep_for(milliseconds(1));
  }
  return false;
}

// While it lives, two threads compute on one processor.
class Rivals {
 public:
  Rivals() {
    cpu_set_t before, one;
    sched_getaffinity(0, sizeof before, &before);
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    sched_setaffinity(0, sizeof one, &one);
    for (std::thread& thread : threads_)  // they inherit the processor
      thread = std::thread([this] {
        while (!end_) compute(milliseconds(1));
      });
    sched_setaffinity(0, sizeof before, &before);
  }
  ~Rivals() {
    end_ = true;
    for (std::thread& thread : threads_) thread.join();
  }

 private:
  std::atomic<bool> end_{false};
  std::thread threads_[2];
};

// The processor time that two threads use in a loop in which one waits a millisecond for the other.
double waiting_costs() {
  const std::clock_t before = std::clock();
#pragma omp parallel num_threads(2)
  if (omp_get_thread_num() == 0) std::this_thread::sleep_for(milliseconds(1));
  return 1.0 * (std::clock() - before) / CLOCKS_PER_SEC;
}

TEST(ProcessorWait, CountsWhatOtherThreadsWait) {
  const Rivals rivals;
  const std::optional<double> before = processor_wait();
  if (!before) GTEST_SKIP() << "the kernel doesn't count";
  EXPECT_TRUE(within_seconds(20, [&] { return *processor_wait() > *before + 0.1; }));
}

TEST(ThreadWaiting, SleepsWhileOthersNeedTheProcessors) {
  // The user's settings win, and those of the build too: the rest runs without them.
  if (std::getenv("OMP_WAIT_POLICY") || std::getenv("GOMP_SPINCOUNT")) {
    const Rivals rivals;
    const ThreadWaiting users;
    EXPECT_FALSE(within_seconds(1, [&] { return !users.spins(); }));
    const std::string program = "/proc/" + std::to_string(getpid()) + "/exe";
    EXPECT_EQ(std::system(("env -u OMP_WAIT_POLICY -u GOMP_SPINCOUNT " + program +
                           " --gtest_brief=1 --gtest_filter=ThreadWaiting.*")
                              .c_str()),
              0);
    return;
  }
  if (!processor_wait() || omp_get_num_procs() < 2) GTEST_SKIP() << "nothing to wait for";
  const ThreadWaiting waiting;
  {
    const Rivals rivals;
    EXPECT_TRUE(within_seconds(20, [&] { return !waiting.spins(); }));
  }
  double costs = 0;
  int loops = 0;
  EXPECT_TRUE(within_seconds(60, [&] {
    const double cost = waiting.spins() ? 0 : waiting_costs();
    if (cost > 0 && !waiting.spins()) costs += cost, ++loops;
    return loops == 30;
  }));
  // LLVM's library has a call of its own for it.
  const bool is_gnu = !dlsym(RTLD_DEFAULT, "kmp_set_blocktime");
  EXPECT_LT(costs / loops, is_gnu ? 0.0005 : 1) << "spins for a millisecond";
  EXPECT_TRUE(within_seconds(20, [&] { return waiting.spins(); })) << "never looks again";
}

}  // namespace
}  // namespace nbx
