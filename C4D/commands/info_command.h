// `nimbrix info`: tells what a frame file or a cache holds.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_info_command(host::HostServices& services, const std::string& name);

}  // namespace nbx
