// Short forms for the lines of a class's table of parameters.
#pragma once

#include "host/interface/parameter_info.h"

namespace nbx::table {

inline constexpr double kUnbounded = std::numeric_limits<double>::infinity();

inline host::ParameterInfo parameter(std::int32_t id, const char* symbol, host::ParameterType type,
                                     host::ParameterValue value, const char* unit,
                                     const char* help) {
  host::ParameterInfo info;
  info.id = id;
  info.symbol = symbol;
  info.type = type;
  info.default_value = std::move(value);
  info.unit = unit;
  info.help = help;
  return info;
}

/// A parameter that is read once, at the start of a run, and so can't have keyframes.
inline host::ParameterInfo still(host::ParameterInfo info) {
  info.animatable = false;
  return info;
}

inline host::ParameterInfo flag(std::int32_t id, const char* symbol, bool on, const char* help) {
  return parameter(id, symbol, host::ParameterType::Bool, on, "", help);
}

inline host::ParameterInfo real(std::int32_t id, const char* symbol, double value, double minimum,
                                double maximum, const char* unit, const char* help) {
  auto info = parameter(id, symbol, host::ParameterType::Real, value, unit, help);
  info.minimum = minimum;
  info.maximum = maximum;
  return info;
}

inline host::ParameterInfo whole(std::int32_t id, const char* symbol, std::int32_t value,
                                 double minimum, double maximum, const char* help) {
  auto info = parameter(id, symbol, host::ParameterType::Long, value, "", help);
  info.minimum = minimum;
  info.maximum = maximum;
  return info;
}

inline host::ParameterInfo vector(std::int32_t id, const char* symbol, const host::Vector& value,
                                  const char* unit, const char* help) {
  return parameter(id, symbol, host::ParameterType::Vector, value, unit, help);
}

inline host::ParameterInfo time(std::int32_t id, const char* symbol, const host::BaseTime& value,
                                const char* help) {
  return still(parameter(id, symbol, host::ParameterType::Time, value, "s", help));
}

inline host::ParameterInfo cycle(std::int32_t id, const char* symbol, std::int32_t value,
                                 std::vector<host::CycleEntry> entries, const char* help) {
  auto info = parameter(id, symbol, host::ParameterType::Long, value, "", help);
  info.cycle = std::move(entries);
  return info;
}

/// A curve through the given points.
inline host::ParameterInfo curve(std::int32_t id, const char* symbol, host::CurvePoints points,
                                 const char* help) {
  return still(parameter(id, symbol, host::ParameterType::Curve, std::move(points), "", help));
}

}  // namespace nbx::table
