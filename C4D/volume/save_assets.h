// Scenes saved together with their caches.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

/// Copies the volume's cache, if it has one that can be read, into the folder "nbx4d_caches" of the
/// saved project, and lets the volume's parameter name the copy. On failure the parameter stays.
/// Nothing happens to a cache that lies there already.
void save_cache(host::BaseObject& volume, host::SaveAssets& assets);

/// The command `collect`: saves a scene with its caches into a folder.
bool register_collect_command(host::HostServices& services, const std::string& name);

}  // namespace nbx
