// Meshes from files.
#pragma once

#include "host/document.h"

namespace host {

/// Gives a mesh object its points and polygons from the file that its parameters name. All meshes
/// of the file become one, each where the file's own tree puts it. A right-handed file lands in
/// the left-handed space with z negated and the corners reversed, so that it looks as it did and
/// its outer sides stay outer. Points at the same place become one. An object whose document holds
/// the points itself is left as it is.
///
/// Throws DocumentError, with the object's place and the cure in it: no mesh is named, the file is
/// missing, is no mesh, has no polygons, or has a point that isn't finite.
void LoadMesh(SceneObject& object, const Document& document);

}  // namespace host
