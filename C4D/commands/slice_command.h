// `nimbrix slice`: a picture of one slice or projection of a grid.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_slice_command(host::HostServices& services, const std::string& name);

}  // namespace nbx
