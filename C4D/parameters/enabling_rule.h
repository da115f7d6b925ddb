// Which parameters a panel shows gray: rules by switches and choices. Amounts rule nothing, since
// keyframes may raise them.
#pragma once

#include <vector>

#include "host/interface/parameter_info.h"
#include "host/interface/scene.h"

namespace nbx {

/// The parameters count only while `ruler` has the value, or has any other one.
struct EnablingRule {
  std::int32_t ruler;
  enum Relation { kIs, kIsNot } relation;
  std::int32_t value;  ///< of a choice; 0 or 1 of a switch
  std::vector<std::int32_t> parameters;
  std::int32_t unless = 0;  ///< a switch that lifts the rule while it is on
};

/// False if a rule says that the parameter doesn't count while the element is as it is.
bool enabled_by_rules(const std::vector<EnablingRule>& rules, const host::BaseList2D& element,
                      std::int32_t id);

}  // namespace nbx
