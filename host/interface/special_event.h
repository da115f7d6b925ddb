// Special events: how a thread of a plug-in wakes the main thread and tells it what has happened.
#pragma once

#include <cstdint>

#include "host/interface/base_container.h"

namespace host {

struct SpecialEvent {
  std::int32_t id = 0;    ///< the plug-in's own
  std::int32_t code = 0;  ///< what has happened, by the plug-in's count
  BaseContainer record = {};
};

}  // namespace host
