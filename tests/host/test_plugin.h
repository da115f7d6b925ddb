// The plug-in of the tests: an object, a tag and a command, whose life it writes down.
#pragma once

#include <cstdint>

#include "host/interface/plugin.h"

namespace test_plugin {

enum Id : std::int32_t { kBox = 2000001, kSource = 2000002, kProbe = 2000003 };

/// Parameters of the box, one of each type, and of the source.
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
  kAmount = 20,
};

inline host::ClassDescription BoxDescription() {
  using host::ParameterType;
  return {.name = "box",
          .help = "A box",
          .parameters = {{.id = kSize,
                          .symbol = "OBOX_EDGE_LENGTH",
                          .type = ParameterType::Real,
                          .default_value = 2.0,
                          .minimum = 0.5,
                          .maximum = 1e6,
                          .unit = "units",
                          .help = "Edge of the box"},
                         {.id = kActive,
                          .symbol = "OBOX_ACTIVE",
                          .type = ParameterType::Bool,
                          .default_value = true},
                         {.id = kSteps,
                          .symbol = "OBOX_STEPS",
                          .type = ParameterType::Long,
                          .default_value = 1,
                          .minimum = 1},
                         {.id = kMode,
                          .symbol = "OBOX_MODE",
                          .type = ParameterType::Long,
                          .default_value = 10,
                          .cycle = {{10, "plain"}, {20, "fancy"}}},
                         {.id = kWind,
                          .symbol = "OBOX_WIND",
                          .type = ParameterType::Vector,
                          .default_value = host::Vector{1, 0, 0}},
                         {.id = kStart,
                          .symbol = "OBOX_START",
                          .type = ParameterType::Time,
                          .default_value = host::BaseTime{}},
                         {.id = kLabel,
                          .symbol = "OBOX_LABEL",
                          .type = ParameterType::String,
                          .default_value = std::string(),
                          .animatable = false},
                         {.id = kFolder,
                          .symbol = "OBOX_FOLDER",
                          .type = ParameterType::Filename,
                          .default_value = host::Filename{},
                          .animatable = false},
                         {.id = kTarget,
                          .symbol = "OBOX_TARGET",
                          .type = ParameterType::Link,
                          .default_value = static_cast<host::BaseList2D*>(nullptr),
                          .animatable = false}}};
}

inline host::ClassDescription SourceDescription() {
  return {.name = "source",
          .help = "A source",
          .parameters = {{.id = kAmount, .symbol = "TSOURCE_AMOUNT", .default_value = 0.0}}};
}

}  // namespace test_plugin
