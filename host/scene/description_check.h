// Checks of a class's description, and of single values against it.
#pragma once

#include <string>

#include "host/interface/parameter_info.h"

namespace host {

/// What is wrong with a description, or an empty text. The rules stand in parameter_info.h.
std::string WhatIsWrong(const ClassDescription& description);

/// What keeps a value of the right type from being one of the parameter's, in words that follow
/// it: "is below 0", or an empty text.
std::string WhatIsWrong(const ParameterInfo& info, const ParameterValue& value);

}  // namespace host
