// Meshes from files.
#pragma once

#include "host/model/model_file.h"
#include "host/scene/document.h"

namespace host {

/// Gives a mesh object its points, polygons and texture coordinates from the file that its
/// parameters name. Without the name of a node all meshes of the file become one, each where the
/// file's own tree puts it. With one it is the node's meshes, in the node's space, and where bones
/// or morphs of the file deform them, their shape at each frame. A right-handed file lands in the
/// left-handed space with z negated and the corners reversed, so that it looks as it did and its
/// outer sides stay outer. Points that are at the same place in all shapes become one. An object
/// whose document holds the points itself is left as it is.
///
/// Throws DocumentError, with the object's place and the cure in it: no mesh is named, the file is
/// missing, is no mesh, has no such node, no polygons, or a point that isn't finite.
void LoadMesh(SceneObject& object, const Document& document, ModelFiles& files);

}  // namespace host
