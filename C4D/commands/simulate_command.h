// `nimbrix simulate` simulates the volume object of a scene into its cache, and `nimbrix continue`
// continues the last run of that cache.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_simulate_command(host::HostServices& services, const std::string& name);
bool register_continue_command(host::HostServices& services, const std::string& name);

}  // namespace nbx
