// A JSON schema (draft 2020-12) of scene documents, made from the registered classes.
#pragma once

#include <string>

#include "host/scene/element_class.h"

namespace host {

/// For editors and programs that write scenes. Every document that the reader accepts validates,
/// except for numbers out of bounds, which the reader clamps with a warning. The schema doesn't
/// check relations between places, such as links.
std::string SceneSchema(const SceneClasses& classes);

}  // namespace host
