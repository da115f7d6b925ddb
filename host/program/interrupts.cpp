#include "host/program/interrupts.h"

#include <atomic>
#include <csignal>

#include <unistd.h>

#include "host/interface/command_data.h"
#include "host/program/event_queue.h"

namespace host {
namespace {

std::atomic<int> count{0};
std::atomic<const EventQueue*> to_wake{nullptr};
static_assert(std::atomic<int>::is_always_lock_free &&
                  std::atomic<const EventQueue*>::is_always_lock_free,
              "used in a signal handler");

void OnSignal(int) {
  if (count.fetch_add(1) >= 2) _exit(kInterrupted);
  if (const EventQueue* queue = to_wake) queue->Wake();
}

}  // namespace

void WatchInterrupts() {
  struct sigaction action {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

void WakeOnInterrupt(const EventQueue* queue) { to_wake = queue; }

int InterruptCount() { return count; }

}  // namespace host
