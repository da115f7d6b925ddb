// Options that several commands share.
#pragma once

#include <string>

#include "host/interface/command_data.h"

namespace nbx {

/// Applies --threads and --device. False, after an error, if there is no such device.
bool apply_machine_options(const host::CommandArguments& arguments, host::CommandContext& context);

}  // namespace nbx
