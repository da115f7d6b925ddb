#include "app/thread_waiting.h"

#include <cstdlib>

#include <unistd.h>

namespace app {
namespace {

/// Rounds of the waiting loop, some tens of microseconds: about what a sleep and a wake-up cost.
constexpr const char* kSpins = "3000";

}  // namespace

void WaitBriefly(char** argv) {
  if (std::getenv("OMP_WAIT_POLICY") || std::getenv("GOMP_SPINCOUNT")) return;
  setenv("GOMP_SPINCOUNT", kSpins, 1);
  execv("/proc/self/exe", argv);
}

}  // namespace app
