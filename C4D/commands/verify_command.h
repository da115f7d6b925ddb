// The command that reads all of a cache and names what is damaged.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_verify_command(host::HostServices& services, const std::string& name);

}  // namespace nbx
