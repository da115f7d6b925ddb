// The command that writes frames for other programs.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_export_command(host::HostServices& services, const std::string& name);

}  // namespace nbx
