// `nimbrix simulate`: runs the simulation of a scene's volume object into its cache.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_simulate_command(host::HostServices& services);

}  // namespace nbx
