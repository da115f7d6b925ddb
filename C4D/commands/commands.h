// The commands of the program that the plug-in registers. Each lies in a file of its own name; what
// it does is in its CommandInfo.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

bool register_simulate_command(host::HostServices& services, const std::string& name);
bool register_continue_command(host::HostServices& services, const std::string& name);
bool register_upres_command(host::HostServices& services, const std::string& name);
bool register_check_command(host::HostServices& services, const std::string& name);
bool register_cache_command(host::HostServices& services, const std::string& name);
bool register_forecast_command(host::HostServices& services, const std::string& name);
bool register_info_command(host::HostServices& services, const std::string& name);
bool register_slice_command(host::HostServices& services, const std::string& name);
bool register_verify_command(host::HostServices& services, const std::string& name);
bool register_export_command(host::HostServices& services, const std::string& name);
bool register_import_command(host::HostServices& services, const std::string& name);
bool register_collect_command(host::HostServices& services, const std::string& name);

}  // namespace nbx
