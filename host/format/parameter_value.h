// Parameter values in scene documents.
#pragma once

#include <string>

#include "host/base/json_place.h"
#include "host/interface/parameter_info.h"
#include "host/scene/document.h"

namespace host {

/// Reads a value. Links are looked up in the document, which must already contain all elements.
/// Numbers out of bounds are clamped, with a warning in the document. Throws DocumentError for a
/// value of the wrong type or an unknown name.
ParameterValue ReadValue(const ParameterInfo& info, const JsonPlace& json, Document& document);

/// Writes the value of a parameter in the form that ReadValue reads.
Json WriteValue(const ParameterInfo& info, const BaseContainer& data, const Document& document);

Json WriteVector(const Vector& vector);

}  // namespace host
