// Lists of the objects of a document.
#pragma once

#include <vector>

#include "host/interface/scene.h"

namespace host {

/// All objects that are switched on together with all their parents. Parents come first.
std::vector<BaseObject*> EnabledObjects(const BaseDocument& document);
/// The enabled objects that are visible in pictures (IsVisibleInRender).
std::vector<BaseObject*> VisibleObjects(const BaseDocument& document);

}  // namespace host
