// Imports a sequence of VDB files as a cache.
#pragma once

#include <string>
#include <vector>

#include "host/interface/command_data.h"

namespace nbx {

/// The options of import that concern VDB files.
std::vector<host::OptionInfo> import_vdb_options();

/// True for a path that import_vdb accepts: a .vdb file or a folder.
bool is_vdb_path(const std::string& path);

/// Imports a file, or all VDB files of a folder, into the cache folder that --cache names. The
/// frame number comes from the file, or from the last digits of its name; the rate from --fps, else
/// from the file, else it is 25. Files that can't be imported are reported and skipped.
host::ExitCode import_vdb(const std::string& path, const host::CommandArguments& arguments,
                          host::CommandContext& context);

}  // namespace nbx
