#include "C4D/run/thread_front_end.h"

#include <algorithm>

#include "C4D/services/host_access.h"

namespace nbx {

namespace {

host::BaseContainer text_record(const std::string& text) {
  host::BaseContainer record;
  record.SetString(1, text);
  return record;
}

}  // namespace

void ThreadFrontEnd::stop(bool at_once) {
  stop_ = std::max(stop_.load(), at_once ? Stop::kNow : Stop::kAtFrameEnd);
  if (at_once) answer(false);
}

void ThreadFrontEnd::answer(bool yes) {
  answer_ = yes;
  answered_.release();
}

bool ThreadFrontEnd::may_exceed_memory(const std::string& question) {
  post_event(kSimulationEvent, kEventAsk, text_record(question));
  answered_.acquire();
  return answer_ && !TestBreak();
}

Stop ThreadFrontEnd::wanted_stop() const {
  return thread_.TestBreak() ? Stop::kNow : std::max(stop_.load(), user_.wanted_stop());
}

void ThreadFrontEnd::opened(const std::string& volume) {
  post_event(kSimulationEvent, kEventStarted, text_record(volume));
  user_.opened(volume);
}

}  // namespace nbx
