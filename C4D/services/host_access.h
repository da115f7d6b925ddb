// Access to the host for parts of the plug-in that no call hands it to: its services, the plug-in's
// own file, and the user's preferences.
#pragma once

#include <cstdint>
#include <string>

#include "C4D/parameters/parameter_reader.h"
#include "host/interface/plugin.h"

namespace nbx {

/// Null before the host has handed its functions over, and after the plug-in's end. Set on the main
/// thread, while nothing runs.
host::HostServices* host_services();
void set_host_services(host::HostServices* services);

/// The plug-in's own file, by the name that the host loaded it with.
const std::string& plugin_file();
void set_plugin_file(const std::string& path);

/// One of the user's preferences. Main thread only.
bool preference(const Parameter<bool>& line);
/// Does nothing without a host.
void set_preference(const Parameter<bool>& line, bool value);
/// The folder in which new caches are made; empty, after a log line, if no preference is set.
std::string preferred_cache_folder();

/// Posts a special event of the plug-in, from any thread. Does nothing without a host.
void post_event(std::int32_t id, std::int32_t code, host::BaseContainer record = {});

}  // namespace nbx
