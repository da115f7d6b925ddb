// The registration of everything that the plug-in adds to the host.
#pragma once

#include <string>
#include <vector>

#include "host/interface/plugin.h"

namespace nbx {

/// A class or a command of the plug-in.
struct Registration {
  std::string name;  ///< what the user reads; without a name it is left out
  bool (*add)(host::HostServices&, const std::string& name);
  const char* failure;  ///< the line in the log
  bool needed = true;   ///< without it the plug-in doesn't start
};

/// Registers them in order and logs each failure. Stops with false at one that is needed.
bool register_in_order(const std::vector<Registration>& all, host::HostServices& services);

/// Registers all classes and commands of the plug-in.
bool register_classes(host::HostServices& services);

}  // namespace nbx
