// Parameter values as they stand in scene documents.
#pragma once

#include <string>

#include "host/base/json_place.h"
#include "host/interface/parameter_info.h"
#include "host/scene/document.h"

namespace host {

/// Reads a value. Links are looked up in the document, which must be complete. A number out of
/// bounds becomes the nearer bound, with a line in the document's warnings. Throws DocumentError
/// for a value of another kind, or that names nothing known.
ParameterValue ReadValue(const ParameterInfo& info, const JsonPlace& json, Document& document);

/// What the container holds under the parameter's id, in the form that ReadValue takes.
Json WriteValue(const ParameterInfo& info, const BaseContainer& data, const Document& document);

Json WriteVector(const Vector& vector);

}  // namespace host
