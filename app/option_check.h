// Checks of single values on the command line.
#pragma once

#include <string>

#include "host/interface/command_data.h"

namespace app {

/// Why the text is not a valid value of the option, in words that follow the value: "isn't a whole
/// number". Empty if it is valid.
std::string WhatIsWrong(const host::OptionInfo& option, const std::string& text);

}  // namespace app
