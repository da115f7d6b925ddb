#include "host/scene/description_check.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>

namespace host {
namespace {

std::string NumberText(double number) {
  std::ostringstream text;
  text << number;
  return text.str();
}

std::string WhatIsWrong(const ParameterInfo& info, double number) {
  if (!std::isfinite(number)) return "is not finite";
  if (number < info.minimum) return "is below " + NumberText(info.minimum);
  if (number > info.maximum) return "is above " + NumberText(info.maximum);
  return {};
}

bool IsConstant(ParameterType type) { return type >= ParameterType::String; }

std::string WhatIsWrong(const ParameterInfo& info) {
  if (info.Name().empty() || info.symbol.find('_') == std::string::npos)
    return "has no symbol of the form CLASS_NAME";
  if (info.default_value.index() != static_cast<std::size_t>(info.type))
    return "has a default of another type";
  if (!info.cycle.empty() && info.type != ParameterType::Long)
    return "has cycle entries but isn't a Long";
  if (info.animatable && IsConstant(info.type)) return "is animatable but can't be interpolated";
  const std::string wrong = WhatIsWrong(info, info.default_value);
  return wrong.empty() ? wrong : "has a default that " + wrong;
}

}  // namespace

std::string WhatIsWrong(const ParameterInfo& info, const ParameterValue& value) {
  if (const auto* real = std::get_if<double>(&value)) return WhatIsWrong(info, *real);
  if (const auto* number = std::get_if<std::int32_t>(&value)) {
    const bool known = info.cycle.empty() ||
                       std::any_of(info.cycle.begin(), info.cycle.end(),
                                   [&](const CycleEntry& entry) { return entry.value == *number; });
    return known ? WhatIsWrong(info, static_cast<double>(*number)) : "isn't one of the choices";
  }
  if (const auto* vector = std::get_if<Vector>(&value)) {
    for (const double component : {vector->x, vector->y, vector->z}) {
      const std::string wrong = WhatIsWrong(info, component);
      if (!wrong.empty()) return "has a component that " + wrong;
    }
  }
  return {};
}

std::string WhatIsWrong(const ClassDescription& description) {
  if (description.name.empty()) return "the class has no name";
  std::set<std::int32_t> ids;
  std::set<std::string> names;
  for (const ParameterInfo& info : description.parameters) {
    const std::string wrong = WhatIsWrong(info);
    if (!wrong.empty()) return "parameter " + info.symbol + " " + wrong;
    if (!ids.insert(info.id).second)
      return "parameter " + info.symbol + " has the id of another parameter";
    if (!names.insert(info.Name()).second) return "parameter " + info.symbol + " is defined twice";
  }
  return {};
}

}  // namespace host
