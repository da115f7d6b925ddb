// `nimbrix manual`: the pages of the documentation, which lie beside the plug-in.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_help_tool(host::HostServices& services, const std::string& name);

}  // namespace nbx
