// How long the threads of parallel loops wait before they sleep.
#pragma once

#include <atomic>
#include <thread>

namespace nbx {

/// While it lives, threads that wait for each other in parallel loops spin on a quiet machine, and
/// sleep at once while other programs take processors from this one. Spinning saves the time of a
/// sleep and a wake-up, but on a busy machine it burns the time of the threads that are waited for.
///
/// Where the user has set OMP_WAIT_POLICY or GOMP_SPINCOUNT, those decide. Loops may run while it
/// is made and while it ends.
class ThreadWaiting {
 public:
  ThreadWaiting();
  /// False while the machine is busy.
  bool spins() const { return spins_; }

 private:
  void watch(const std::stop_token& stop);

  std::atomic<bool> spins_{true};
  std::jthread watch_;
};

}  // namespace nbx
