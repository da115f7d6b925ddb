// A sequence of VDB files as a cache.
#pragma once

#include <string>
#include <vector>

#include "host/interface/command_data.h"

namespace nbx {

/// The options of import that concern VDB files.
std::vector<host::OptionInfo> import_vdb_options();

/// True for what import_vdb takes: a .vdb file, or a folder.
bool is_vdb_path(const std::string& path);

/// Imports a file, or all VDB files of a folder, into the cache folder that --cache names. A
/// frame's number is that in the file, or the last digits of its name; the rate is that of --fps,
/// or that in the file, or 25. Files that can't be imported are told, and the others are.
host::ExitCode import_vdb(const std::string& path, const host::CommandArguments& arguments,
                          host::CommandContext& context);

}  // namespace nbx
