// The options that export and import of VDB files share.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "exchange/vdb_file.h"
#include "host/interface/command_data.h"

namespace nbx {

std::vector<host::OptionInfo> vdb_options();

/// Reads the options. False, after an error, for a --name without a channel.
bool read_vdb_options(VdbOptions& options, const host::CommandArguments& arguments,
                      host::CommandContext& context);

/// The names under which import looks for channels, with their grid types: those of `options` and
/// of every preset.
std::map<std::string, int> known_vdb_names(const VdbOptions& options);

}  // namespace nbx
