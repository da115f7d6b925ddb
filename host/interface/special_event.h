// Special events: how a thread of a plug-in wakes the main thread and notifies it.
#pragma once

#include <cstdint>

#include "host/interface/base_container.h"

namespace host {

struct SpecialEvent {
  std::int32_t id = 0;    ///< id of the plug-in
  std::int32_t code = 0;  ///< what happened; defined by the plug-in
  BaseContainer record = {};
};

}  // namespace host
