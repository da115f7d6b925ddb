#include "C4D/parameters/enabling_rule.h"

#include <algorithm>

#include "C4D/parameters/parameter_reader.h"

namespace nbx {

namespace {

std::int32_t choice(const host::BaseList2D& element, std::int32_t id) {
  const host::ParameterInfo* info = element.GetDescription().Find(id);
  const ParameterReader p(element);
  return info && info->type == host::ParameterType::Bool ? p.flag(id) : p.whole(id);
}

}  // namespace

bool enabled_by_rules(const std::vector<EnablingRule>& rules, const host::BaseList2D& element,
                      std::int32_t id) {
  return std::all_of(rules.begin(), rules.end(), [&](const EnablingRule& rule) {
    if (std::find(rule.parameters.begin(), rule.parameters.end(), id) == rule.parameters.end())
      return true;
    const bool is = choice(element, rule.ruler) == rule.value;
    return is == (rule.relation == EnablingRule::kIs) ||
           (rule.unless != 0 && choice(element, rule.unless) != 0);
  });
}

}  // namespace nbx
