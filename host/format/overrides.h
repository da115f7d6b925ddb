// Parameters set on the command line.
#pragma once

#include <string>
#include <vector>

#include "host/scene/document.h"

namespace host {

/// Applies settings OBJECT.parameter=VALUE in order, to a document that isn't open yet. OBJECT is
/// the name of one or more objects, or `*` for every object that has the parameter. If the object's
/// class has no such parameter, its tags get the value. The value is written as in a scene
/// document, with these exceptions: quotes around text and brackets around vectors may be omitted;
/// bools may also be on and off, yes and no, 1 and 0; file names are relative to the current
/// folder. The parameter loses its keyframes. Throws DocumentError. The error and the warnings of
/// the document start with the setting.
void ApplyOverrides(Document& document, const std::vector<std::string>& settings);

}  // namespace host
