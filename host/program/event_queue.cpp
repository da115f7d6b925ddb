#include "host/program/event_queue.h"

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace host {

EventQueue::EventQueue() : wake_(eventfd(0, EFD_CLOEXEC)) {
  if (wake_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
}

EventQueue::~EventQueue() { close(wake_); }

void EventQueue::Add(SpecialEvent event) {
  {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
  }
  Wake();
}

void EventQueue::Wake() const {
  const int before = errno;  // a signal handler must not change it
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(wake_, &one, sizeof one);
  errno = before;
}

bool EventQueue::Take(SpecialEvent& event) {
  const std::lock_guard lock(mutex_);
  if (events_.empty()) return false;
  event = std::move(events_.front());
  events_.pop_front();
  return true;
}

bool EventQueue::Wait(SpecialEvent& event) {
  if (Take(event)) return true;
  std::uint64_t count = 0;
  while (read(wake_, &count, sizeof count) < 0 && errno == EINTR) {
  }
  return Take(event);
}

}  // namespace host
