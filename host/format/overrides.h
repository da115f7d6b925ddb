// Parameters that the user sets on the command line.
#pragma once

#include <string>
#include <vector>

#include "host/scene/document.h"

namespace host {

/// Applies settings of the form OBJECT.parameter=VALUE in their order, to a document that isn't
/// open yet. OBJECT is the name of one or more objects, or `*` for every object that has the
/// parameter. Where the object's class has no such parameter, those of its tags take the value. The
/// value is written as in a scene document; quotes around text and brackets around vectors may be
/// left out, switches may also be on and off, yes and no, 1 and 0, and relative file names count
/// from the current folder. The parameter loses its keyframes. Throws DocumentError, which begins
/// with the setting; so do the warnings of the document.
void ApplyOverrides(Document& document, const std::vector<std::string>& settings);

}  // namespace host
