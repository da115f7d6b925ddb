// Options that several commands share.
#pragma once

#include <string>

#include "host/interface/command_data.h"

namespace nbx {

/// Obeys --threads and --device. False if there is no such device; the error has been told.
bool apply_machine_options(const host::CommandArguments& arguments, host::CommandContext& context);

}  // namespace nbx
