// Keyframes as they stand in scene documents.
#pragma once

#include "host/base/json_place.h"
#include "host/scene/document.h"

namespace host {

/// Reads the "keyframes" of an object, transform and parameters, or of any other element,
/// parameters alone. Throws DocumentError.
void ReadKeyframes(SceneObject& object, const JsonPlace& json, Document& document);
void ReadKeyframes(ElementState& element, const JsonPlace& json, Document& document);

/// What the readers take; an empty object if nothing has keyframes.
Json WriteKeyframes(const SceneObject& object, const Document& document);
Json WriteKeyframes(const ElementState& element, const Document& document);

/// A scale; no component may be 0, or the object would have no inverse.
Vector ReadScale(const JsonPlace& json);

}  // namespace host
