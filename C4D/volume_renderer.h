// The post effect "VPvolume": smoke and fire in the host's pictures.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_volume_renderer(host::HostServices& services, const std::string& name);

}  // namespace nbx
