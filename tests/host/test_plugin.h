// The test plug-in: an object, a tag and a command that record their life cycle.
#pragma once

#include <cstdint>

#include "host/interface/plugin.h"

namespace test_plugin {

enum Id : std::int32_t { kBox = 2000001, kSource = 2000002, kProbe = 2000003 };

/// Parameters of the box (one of each type) and of the source.
enum Parameter : std::int32_t {
  kSize = 1,
  kActive = 2,
  kSteps = 3,
  kMode = 4,
  kWind = 5,
  kStart = 6,
  kLabel = 7,
  kFolder = 8,
  kTarget = 9,
  kShape = 10,
  kColors = 11,
  kParts = 12,
  kPress = 13,
  kAmount = 20,
};

inline host::ClassDescription BoxDescription() {
  host::ClassDescription box{.name = "box", .help = "A box"};
  const auto add = [&box](std::int32_t id, const char* symbol, host::ParameterValue value) {
    const auto type = static_cast<host::ParameterType>(value.index());
    box.parameters.push_back({.id = id,
                              .symbol = symbol,
                              .type = type,
                              .default_value = value,
                              .animatable = id < kLabel});
  };
  add(kSize, "OBOX_EDGE_LENGTH", 2.0);
  add(kActive, "OBOX_ACTIVE", true);
  add(kSteps, "OBOX_STEPS", 1);
  add(kMode, "OBOX_MODE", 10);
  add(kWind, "OBOX_WIND", host::Vector{1, 0, 0});
  add(kStart, "OBOX_START", host::BaseTime());
  add(kLabel, "OBOX_LABEL", std::string());
  add(kFolder, "OBOX_FOLDER", host::Filename());
  add(kTarget, "OBOX_TARGET", static_cast<host::BaseList2D*>(nullptr));
  add(kShape, "OBOX_SHAPE", host::CurvePoints{{0, 0}, {1, 1}});
  add(kColors, "OBOX_COLORS", host::Gradient{{{0, {1, 0, 0}}, {1, {0, 0, 1}}}});
  add(kParts, "OBOX_PARTS", host::LinkList());
  add(kPress, "OBOX_PRESS", std::monostate());
  box.parameters.back().stored = false;
  box.parameters[0].minimum = 0.5;
  box.parameters[0].maximum = 1e6;
  box.parameters[0].unit = "units";
  box.parameters[3].cycle = {{10, "plain"}, {20, "fancy"}};
  return box;
}

inline host::ClassDescription SourceDescription() {
  return {.name = "source",
          .help = "A source",
          .parameters = {{.id = kAmount, .symbol = "TSOURCE_AMOUNT", .default_value = 0.0}}};
}

}  // namespace test_plugin
