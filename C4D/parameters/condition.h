// When a parameter has an effect, given the values of others. Panels show it gray otherwise.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "C4D/parameters/parameter_reader.h"

namespace nbx {

/// Holds by switches and choices only: keyframes may change amounts, so a panel can't go by them.
class Condition {
 public:
  using Ids = std::vector<std::int32_t>;
  /// Returns the parameters whose values prevent the condition from holding; none if it holds.
  using Test = std::function<Ids(const ParameterReader&)>;

  Condition() : test_([](const ParameterReader&) { return Ids(); }) {}
  explicit Condition(Test test) : test_(std::move(test)) {}
  Ids blockers(const ParameterReader& p) const { return test_(p); }
  bool holds(const ParameterReader& p) const { return blockers(p).empty(); }

  friend Condition operator&&(const Condition& a, const Condition& b) {
    return Condition([a, b](const ParameterReader& p) { return joined(a, b, p); });
  }
  friend Condition operator||(const Condition& a, const Condition& b) {
    return Condition([a, b](const ParameterReader& p) {
      return a.holds(p) || b.holds(p) ? Ids() : joined(a, b, p);
    });
  }

 private:
  static Ids joined(const Condition& a, const Condition& b, const ParameterReader& p) {
    Ids ids = a.blockers(p);
    for (const std::int32_t id : b.blockers(p)) ids.push_back(id);
    return ids;
  }

  Test test_;
};

// Conditions keep the address of the line, which may come later in its table.

template <class T>
Condition is(const Parameter<T>& parameter, T value) {
  return Condition([&parameter, value](const ParameterReader& p) {
    return p(parameter) == value ? Condition::Ids() : Condition::Ids{parameter.id};
  });
}
template <class T>
Condition is_not(const Parameter<T>& parameter, T value) {
  return Condition([&parameter, value](const ParameterReader& p) {
    return p(parameter) != value ? Condition::Ids() : Condition::Ids{parameter.id};
  });
}
inline Condition on(const Parameter<bool>& parameter) { return is(parameter, true); }
inline Condition off(const Parameter<bool>& parameter) { return is(parameter, false); }

}  // namespace nbx
