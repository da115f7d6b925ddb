// JSON text for people to read.
#pragma once

#include <functional>
#include <string>

#include "host/base/json_place.h"

namespace host {

/// Writes each element of an array and each key of an object on its own line, indented by `indent`
/// spaces per level. `one_line(json, column)` returns the text of a value that belongs on a single
/// line when it starts at that column, and an empty text for any other. Primitive values are always
/// on one line.
std::string JsonText(const Json& json, int indent,
                     const std::function<std::string(const Json&, std::size_t)>& one_line);

}  // namespace host
