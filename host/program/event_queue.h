// The queue of special events. The main thread waits here without using the processor.
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

  /// May be called from any thread.
  void Add(SpecialEvent event);
  /// Makes `Wait` return. May be called from any thread and from signal handlers.
  void Wake() const;
  /// Takes the oldest event, or waits for one. False if Wake was called and there is no event.
  bool Wait(SpecialEvent& event);

 private:
  bool Take(SpecialEvent& event);

  std::mutex mutex_;  ///< guards events_
  std::deque<SpecialEvent> events_;
  int wake_;  ///< an eventfd; above 0 after an event or a wake-up
};

}  // namespace host
