// What `info` shows of a VDB file.
#pragma once

#include <string>

#include "host/interface/command_data.h"

namespace nbx {

/// True for a path that ends in ".vdb".
bool is_vdb_file(const std::string& path);

/// Shows the file's metadata, and of each grid its type, voxels, box, values and metadata.
host::ExitCode show_vdb(const std::string& path, host::CommandContext& context);

}  // namespace nbx
