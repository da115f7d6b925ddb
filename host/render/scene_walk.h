// The objects of a document, for those who look for some of them.
#pragma once

#include <vector>

#include "host/interface/scene.h"

namespace host {

/// All objects that are switched on, as is everything above them, parents first.
std::vector<BaseObject*> EnabledObjects(const BaseDocument& document);
/// Those of them that pictures show (IsVisibleInRender).
std::vector<BaseObject*> VisibleObjects(const BaseDocument& document);

}  // namespace host
