// The parts of `nimbrix cache` that change a cache as a whole. Each returns the exit code.
#pragma once

#include <string>

#include "host/interface/command_data.h"

namespace nbx {

int lock_cache(const std::string& directory, bool on, host::CommandContext& context);
int rename_cache_to(const std::string& directory, const std::string& name,
                    host::CommandContext& context);
/// Asks first, unless `--yes` is given.
int remove_whole_cache(const std::string& directory, bool yes, host::CommandContext& context);
/// Makes a cache that shares the frames up to `frame`. With an empty `name` it gets the next
/// number.
int branch_at(const std::string& directory, int frame, const std::string& name,
              host::CommandContext& context);

}  // namespace nbx
