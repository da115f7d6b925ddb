// Checks of single values on the command line.
#pragma once

#include <string>

#include "host/interface/command_data.h"

namespace app {

/// What keeps the text from being a value of the option, in words that follow it: "isn't a whole
/// number"; empty if nothing does.
std::string WhatIsWrong(const host::OptionInfo& option, const std::string& text);

}  // namespace app
