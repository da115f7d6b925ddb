// The words of warnings.
#pragma once

#include <string>
#include <vector>

#include "C4D/run/warnings/world_box.h"
#include "host/interface/node_data.h"
#include "host/interface/parameter_info.h"
#include "host/interface/scene.h"

namespace nbx {

/// With up to six digits.
std::string number_text(double x);
/// "(-5, 0, -5) to (5, 10, 5)".
std::string box_text(const WorldBox& box);
/// "a", "a and b", "a, b and c".
std::string list_text(const std::vector<std::string>& names);
/// The name of a parameter in documents.
std::string parameter_name(const host::BaseList2D& element, std::int32_t id);
/// "simulate_density is off", "fire_color_mode is black_body", "noise_strength is 0".
std::string setting_text(const host::BaseList2D& element, std::int32_t id);
/// `emitter "wick": `.
std::string emitter_subject(const std::string& name);

}  // namespace nbx
