// `nimbrix simulate`: runs the simulation of a scene's volume object into its cache; and `nimbrix
// continue`, which goes on from where the last run stopped.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_simulate_command(host::HostServices& services, const std::string& name);
bool register_continue_command(host::HostServices& services, const std::string& name);

}  // namespace nbx
