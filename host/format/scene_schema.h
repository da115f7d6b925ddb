// The form of scene documents as a JSON schema (draft 2020-12), made from the registered classes.
#pragma once

#include <string>

#include "host/scene/element_class.h"

namespace host {

/// For editors and programs that write scenes. Every document that the reader takes validates, but
/// for numbers beyond their bounds, which the reader brings back with a warning. What needs more
/// than one place to be checked, such as links, is left to the reader.
std::string SceneSchema(const SceneClasses& classes);

}  // namespace host
