// Short forms for the lines of tables of parameters, the host's and those of plug-ins.
#pragma once

#include <limits>
#include <string>
#include <utility>

#include "host/interface/parameter_info.h"

namespace host::line {

inline constexpr double kUnbounded = std::numeric_limits<double>::infinity();

/// A line of the type that the value has. It may have keyframes if its type may.
inline ParameterInfo Any(std::int32_t id, const std::string& symbol, ParameterValue value,
                         const char* unit, const char* help) {
  const auto type = static_cast<ParameterType>(value.index());
  const bool animatable = type <= ParameterType::Time;
  return {.id = id,
          .symbol = symbol,
          .type = type,
          .default_value = std::move(value),
          .unit = unit,
          .help = help,
          .animatable = animatable};
}

}  // namespace host::line
