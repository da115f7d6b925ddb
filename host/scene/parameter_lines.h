// Short forms for the lines of the host's own tables of parameters.
#pragma once

#include <utility>

#include "host/interface/parameter_lines.h"
#include "host/scene/element_class.h"

namespace host::line {

/// No length of a scene is larger; a domain or a primitive beyond it couldn't be looked at.
inline constexpr double kLongest = 1e12;

inline ParameterInfo Flag(std::int32_t id, const char* symbol, bool on, const char* help) {
  return Any(id, symbol, on, "", help);
}

inline ParameterInfo Real(std::int32_t id, const char* symbol, double value, double minimum,
                          double maximum, const char* unit, const char* help) {
  ParameterInfo info = Any(id, symbol, value, unit, help);
  info.minimum = minimum;
  info.maximum = maximum;
  return info;
}

inline ParameterInfo Whole(std::int32_t id, const char* symbol, std::int32_t value, double minimum,
                           double maximum, const char* help) {
  ParameterInfo info = Any(id, symbol, value, "", help);
  info.minimum = minimum;
  info.maximum = maximum;
  return info;
}

/// The edges of a box; those of a mesh may be below 0, which turns it inside out.
inline ParameterInfo Edges(std::int32_t id, const char* symbol, const Vector& value,
                           const char* help) {
  ParameterInfo info = Any(id, symbol, value, "units", help);
  info.minimum = -kLongest;
  info.maximum = kLongest;
  return info;
}

/// A color, or another triple of numbers that are at least 0.
inline ParameterInfo Color(std::int32_t id, const char* symbol, const Vector& value,
                           const char* help) {
  ParameterInfo info = Any(id, symbol, value, "", help);
  info.minimum = 0;
  return info;
}

inline ParameterInfo Cycle(std::int32_t id, const char* symbol, std::int32_t value,
                           std::vector<CycleEntry> entries, const char* help) {
  ParameterInfo info = Any(id, symbol, value, "", help);
  info.cycle = std::move(entries);
  return info;
}

inline ParameterInfo Link(std::int32_t id, const char* symbol, LinkTarget target,
                          const char* help) {
  ParameterInfo info = Any(id, symbol, static_cast<BaseList2D*>(nullptr), "", help);
  info.target = target;
  return info;
}

/// Without keyframes.
inline ParameterInfo Still(ParameterInfo info) {
  info.animatable = false;
  return info;
}

/// A class of the host's own. Its table is right: the tests of the host read it.
inline void Add(ElementClasses& classes, std::int32_t id, const char* display_name,
                const char* name, const char* help, std::vector<ParameterInfo> parameters) {
  static_cast<void>(classes.Add(
      {id, display_name, {.name = name, .help = help, .parameters = std::move(parameters)}, {}}));
}

}  // namespace host::line
