#include "util/thread_waiting.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <semaphore>
#include <system_error>

#include <omp.h>

#include "util/log.h"
#include "util/processor_wait.h"

namespace nbx {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

// The machine is busy if threads waited for a processor for a quarter of a time this long. That is
// more than single slices of system services, and less than one program that computes takes.
constexpr Seconds kWindow = 20ms;
constexpr double kBusy = 0.25;
// How long threads sleep before the next look. It doubles while the machine stays busy, since a
// look at a busy machine costs about its window.
constexpr Seconds kShortRest = 100ms, kLongRest = 1600ms;

// GNU's OpenMP library lets threads spin hardly at all while its threads outnumber the processors,
// see GOMP_SPINCOUNT in its manual. It has no call for that. This team does nothing: it is counted.
class IdleTeam {
 public:
  IdleTeam() = default;
  ~IdleTeam() {
    end_.release();
    thread_.join();
  }
  IdleTeam(const IdleTeam&) = delete;
  IdleTeam& operator=(const IdleTeam&) = delete;

 private:
  void run() {
#pragma omp parallel num_threads(omp_get_num_procs())
    ++members_;
    end_.acquire();
  }

  std::atomic<int> members_{0};  // something to do, or the compiler drops the region
  std::binary_semaphore end_{0};
  std::thread thread_{&IdleTeam::run, this};
};

}  // namespace

ThreadWaiting::ThreadWaiting() {
  if (omp_get_max_threads() < 2 || std::getenv("OMP_WAIT_POLICY") || std::getenv("GOMP_SPINCOUNT"))
    return;
  watch_ = std::jthread([this](const std::stop_token& stop) {
    try {
      watch(stop);
    } catch (const std::exception& error) {  // without a thread or memory, runs are slower
      LogMessage() << "Waiting threads spin: " << error.what();
    }
  });
}

void ThreadWaiting::watch(const std::stop_token& stop) {
  std::mutex mutex;
  std::condition_variable_any condition;
  std::unique_lock lock(mutex);
  const auto pause = [&](Seconds time) {
    condition.wait_for(lock, stop, time, [] { return false; });
    return !stop.stop_requested();
  };

  Seconds rest = kShortRest;
  for (;;) {
    // Threads of the process don't hold each other up while they spin: they are no more than the
    // processors. So what they wait is due to others.
    int looks = 0;
    for (bool busy = false; !busy; ++looks) {
      const Clock::time_point start = Clock::now();
      const std::optional<double> before = processor_wait();
      if (!pause(kWindow)) return;
      const std::optional<double> after = processor_wait();
      busy = !before || !after || *after - *before > kBusy * Seconds(Clock::now() - start).count();
    }
    rest = looks > 1 ? kShortRest : std::min(2 * rest, kLongRest);

    {
      const IdleTeam team;
      spins_ = false;
      if (!pause(rest)) return;
    }
    spins_ = true;
  }
}

}  // namespace nbx
