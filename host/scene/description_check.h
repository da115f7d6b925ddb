// Checks of class descriptions and of parameter values.
#pragma once

#include <string>

#include "host/interface/parameter_info.h"

namespace host {

/// What is wrong with a description, or an empty text. parameter_info.h lists the rules.
std::string WhatIsWrong(const ClassDescription& description);

/// Why a value of the right type is invalid, in words that follow the value: "is below 0". Empty if
/// it is valid.
std::string WhatIsWrong(const ParameterInfo& info, const ParameterValue& value);

}  // namespace host
