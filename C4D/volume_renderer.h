// The post effect "VPvolume", which adds smoke and fire to the host's pictures.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_volume_renderer(host::HostServices& services, const std::string& name);

}  // namespace nbx
