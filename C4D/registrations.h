// All classes that the plug-in gives to the host.
#pragma once

#include <string>
#include <vector>

#include "host/interface/plugin.h"

namespace nbx {

/// A class or a command of the plug-in.
struct Registration {
  std::string name;  ///< what the user reads; without one it isn't registered
  bool (*add)(host::HostServices&, const std::string& name);
  const char* failure;  ///< the line in the log
  bool needed = true;   ///< the plug-in can't do without it
};

/// In their order. False, with a line in the log, at the first failure of one that is needed;
/// failures of others are logged and passed over.
bool register_in_order(const std::vector<Registration>& all, host::HostServices& services);

/// Those of the plug-in.
bool register_classes(host::HostServices& services);

}  // namespace nbx
