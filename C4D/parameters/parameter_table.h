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

/// The bounds hold for each component.
inline host::ParameterInfo bounded(host::ParameterInfo info, double minimum, double maximum) {
  info.minimum = minimum;
  info.maximum = maximum;
  return info;
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

/// A curve that runs straight from point to point.
inline host::ParameterInfo straight_curve(std::int32_t id, const char* symbol,
                                          host::CurvePoints points, const char* help) {
  for (host::CurvePoint& p : points) p.in_mode = p.out_mode = host::CurveMode::Linear;
  return curve(id, symbol, std::move(points), help);
}

inline host::ParameterInfo gradient(std::int32_t id, const char* symbol, host::Gradient value,
                                    const char* help) {
  return still(parameter(id, symbol, host::ParameterType::Gradient, std::move(value), "", help));
}

inline host::ParameterInfo file(std::int32_t id, const char* symbol, const char* help) {
  return still(parameter(id, symbol, host::ParameterType::Filename, host::Filename(), "", help));
}

inline host::ParameterInfo link(std::int32_t id, const char* symbol, host::LinkTarget target,
                                const char* help) {
  auto info = still(parameter(id, symbol, host::ParameterType::Link,
                              static_cast<host::BaseList2D*>(nullptr), "", help));
  info.target = target;
  return info;
}

/// A parameter whose feature is still to come.
inline host::ParameterInfo later(host::ParameterInfo info) {
  info.listed = false;
  return info;
}

/// What a panel shows and no document holds.
inline host::ParameterInfo shown(host::ParameterInfo info) {
  info.stored = false;
  return still(std::move(info));
}

inline host::ParameterInfo shown_text(std::int32_t id, const char* symbol, const char* help) {
  return shown(parameter(id, symbol, host::ParameterType::String, std::string(), "", help));
}

inline host::ParameterInfo button(std::int32_t id, const char* symbol, const char* help) {
  return shown(parameter(id, symbol, host::ParameterType::Button, std::monostate(), "", help));
}

}  // namespace nbx::table
