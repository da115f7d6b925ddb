// When a parameter has an effect, given the values of others. Panels show it gray otherwise.
#pragma once

#include <functional>
#include <utility>

#include "C4D/parameters/parameter_reader.h"

namespace nbx {

/// Holds by switches and choices only: keyframes may change amounts, so a panel can't go by them.
class Condition {
 public:
  using Test = std::function<bool(const ParameterReader&)>;

  Condition() : test_([](const ParameterReader&) { return true; }) {}
  explicit Condition(Test test) : test_(std::move(test)) {}
  bool holds(const ParameterReader& p) const { return test_(p); }

  friend Condition operator&&(const Condition& a, const Condition& b) {
    return Condition([a, b](const ParameterReader& p) { return a.holds(p) && b.holds(p); });
  }
  friend Condition operator||(const Condition& a, const Condition& b) {
    return Condition([a, b](const ParameterReader& p) { return a.holds(p) || b.holds(p); });
  }

 private:
  Test test_;
};

// Conditions keep the address of the line, which may come later in its table.

template <class T>
Condition is(const Parameter<T>& parameter, T value) {
  return Condition([&parameter, value](const ParameterReader& p) { return p(parameter) == value; });
}
template <class T>
Condition is_not(const Parameter<T>& parameter, T value) {
  return Condition([&parameter, value](const ParameterReader& p) { return p(parameter) != value; });
}
inline Condition on(const Parameter<bool>& parameter) { return is(parameter, true); }
inline Condition off(const Parameter<bool>& parameter) { return is(parameter, false); }

}  // namespace nbx
