// The emitter tag as the host's class: its messages and which of its parameters can be edited.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_volume_tag(host::HostServices& services, const std::string& name);

}  // namespace nbx
