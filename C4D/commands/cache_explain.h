// `nimbrix cache explain`: which frames of a cache are valid, and why the others aren't.
#pragma once

#include <string>

#include "host/interface/command_data.h"

namespace nbx {

/// Compares the cache with the scene of the volume. Returns the exit code: kDone if all frames of
/// the range are there and valid.
int explain_cache(host::BaseObject& volume, const std::string& directory,
                  host::CommandContext& context);

}  // namespace nbx
