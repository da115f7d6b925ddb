#include "util/shared_loop.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/support.h"

namespace nbx {
namespace {

TEST(SharedLoop, CallsEachOnce) {
  for (const int threads : {1, 2, 3, 7})
    for (const int n : {-1, 0, 1, 2, 3, 6, 7, 8, 1000})
      for (const bool parallel : {false, true}) {
        const test::ThreadCount count(threads);
        std::vector<std::atomic<int>> calls(1010);
        const auto own = std::this_thread::get_id();
        std::atomic<int> elsewhere{0};
        shared_loop(5, 5 + n, parallel, [&](int i) {
          ++calls[i];
          if (std::this_thread::get_id() != own) ++elsewhere;
        });
        for (int i = 0; i < 1010; ++i)
          EXPECT_EQ(calls[i], i >= 5 && i < 5 + n) << threads << n << i;
        EXPECT_TRUE(parallel || elsewhere == 0);
      }
}

// All threads wait in their first call until each has made one, and one of them until the rest is
// done.
TEST(SharedLoop, BeginsWithTheOwnPartAndTakesOverTheRest) {
  const test::ThreadCount count(3);
  int begins[3] = {-1, -1, -1}, expected[3] = {-1, -1, -1};
#pragma omp parallel for schedule(static)
  for (int i = 2; i < 22; ++i)
    if (expected[omp_get_thread_num()] < 0) expected[omp_get_thread_num()] = i;
  std::atomic<int> begun{0}, done{0};
  shared_loop(2, 22, true, [&](int i) {
    int& begin = begins[omp_get_thread_num()];
    if (begin < 0) {
      begin = i;
      ++begun;
      while (begun < 3) std::this_thread::yield();
    }
    while (i == 2 && done < 19) std::this_thread::yield();
    ++done;
  });
  EXPECT_EQ(done, 20);
  for (int t = 0; t < 3; ++t) EXPECT_EQ(begins[t], expected[t]) << t;
}

}  // namespace
}  // namespace nbx
