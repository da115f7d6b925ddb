// The command that takes in the files of other programs.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_import_command(host::HostServices& services, const std::string& name);

}  // namespace nbx
