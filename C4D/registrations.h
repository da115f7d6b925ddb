// All classes that the plug-in gives to the host.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

/// Registers them in their fixed order. False, with a line in the log, at the first failure of one
/// that the plug-in can't do without; failures of others are logged and passed over.
bool register_classes(host::HostServices& services);

}  // namespace nbx
