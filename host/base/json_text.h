// JSON text for people to read.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/base/json_comments.h"
#include "host/base/json_place.h"

namespace host {

/// The text of a value that belongs on a single line when it starts at that column, and an empty
/// text for any other value.
using OneLineText = std::function<std::string(const Json& value, std::size_t column)>;

/// Writes each element of an array and each key of an object on its own line, indented by `indent`
/// spaces per level. Primitive values are always on one line.
///
/// Comments that can't be at their place, because their value is missing or within a line, are
/// written before the nearest value around it.
std::string JsonText(const Json& json, std::size_t indent, const OneLineText& one_line,
                     const std::vector<JsonComment>& comments = {});

}  // namespace host
