// The host, for the parts of the plug-in that aren't given it: what they run on, and what the user
// prefers.
#pragma once

#include <cstdint>
#include <string>

#include "host/interface/plugin.h"

namespace nbx {

/// Null before the host has handed its functions over and after the end. Set on the main thread,
/// while nothing runs.
host::HostServices* host_services();
void set_host_services(host::HostServices* services);

/// The plug-in's own file, as the host named it at the load.
const std::string& plugin_file();
void set_plugin_file(const std::string& path);

/// A preference of the user's; the default of the table where none is set. Main thread only.
bool preference(std::int32_t id);
/// Sets one; nothing happens without a host.
void set_preference(std::int32_t id, bool value);
/// The folder under which new caches are made; empty, after a log line, if no preference is set.
std::string preferred_cache_folder();

/// Posts a special event of the plug-in; any thread. Nothing happens without a host.
void post_event(std::int32_t id, std::int32_t code, host::BaseContainer record = {});

}  // namespace nbx
