// Keyframes in scene documents.
#pragma once

#include "host/base/json_place.h"
#include "host/scene/document.h"

namespace host {

/// Reads the "keyframes" of an object (transform and parameters) or of any other element
/// (parameters only). Throws DocumentError.
void ReadKeyframes(SceneObject& object, const JsonPlace& json, Document& document);
void ReadKeyframes(ElementState& element, const JsonPlace& json, Document& document);

/// The inverse of the readers. An empty object if there are no keyframes.
Json WriteKeyframes(const SceneObject& object, const Document& document);
Json WriteKeyframes(const ElementState& element, const Document& document);

/// Reads a scale. No component may be 0, otherwise the object would have no inverse.
Vector ReadScale(const JsonPlace& json);

}  // namespace host
