// `nimbrix cache list`: the caches of a scene or of a folder, as a tree.
#pragma once

#include <string>

#include "host/interface/command_data.h"

namespace nbx {

/// Lists the caches of every volume of the scene, or those in the folder `path`. Returns the exit
/// code.
int list_scene_or_folder(const std::string& path, const host::CommandArguments& arguments,
                         host::CommandContext& context);

}  // namespace nbx
