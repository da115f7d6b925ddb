// The host's queue of special events, at which the main thread waits without using the processor.
#pragma once

#include <deque>
#include <mutex>

#include "host/interface/special_event.h"

namespace host {

class EventQueue {
 public:
  EventQueue();
  ~EventQueue();
  EventQueue(const EventQueue&) = delete;
  EventQueue& operator=(const EventQueue&) = delete;

  /// Any thread.
  void Add(SpecialEvent event);
  /// Lets `Wait` return. Any thread, and signal handlers.
  void Wake() const;
  /// Takes the oldest event; waits for one if there is none. False if it was woken without one,
  /// now or since the last wait.
  bool Wait(SpecialEvent& event);

 private:
  bool Take(SpecialEvent& event);

  std::mutex mutex_;  ///< guards events_
  std::deque<SpecialEvent> events_;
  int wake_;  ///< an eventfd; above 0 once something happened
};

}  // namespace host
