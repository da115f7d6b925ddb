// The parts of the volume object's table of parameters, by subject.
#pragma once

#include "C4D/parameters/parameter_table.h"
#include "C4D/parameters/volume_parameters.h"

namespace nbx {

using ParameterList = std::vector<host::ParameterInfo>;

ParameterList smoke_parameters();   // density and temperature
ParameterList fire_parameters();    // fuel and burn
ParameterList motion_parameters();  // wind, drag, swirls and noise
ParameterList cache_parameters();   // cache, states, frames that are shown
ParameterList upres_parameters();
ParameterList shading_parameters();  // how smoke and fire look
ParameterList lighting_parameters();
ParameterList marching_parameters();  // rays through the volume
ParameterList display_parameters();   // viewport
ParameterList info_parameters();      // of the panel

// Units that several groups use.
inline constexpr const char* kPartPerFrame = "of 1 per frame";
inline constexpr const char* kDiffusionUnit = "100 units^2/s";

/// A parameter that selects a channel, none by default.
host::ParameterInfo channel_choice(std::int32_t id, const char* symbol, const char* help);

}  // namespace nbx
