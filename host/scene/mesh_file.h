// Meshes from files.
#pragma once

#include "host/model/model_file.h"
#include "host/scene/document.h"

namespace host {

/// Loads the points, polygons and texture coordinates of a mesh object from its file. Without a
/// node name, all meshes of the file are merged, each placed by the node tree of the file. With a
/// node name, only the meshes of that node are loaded, in its own space; if bones or morph targets
/// deform them, there is one shape per frame.
///
/// z is negated and the corners of polygons are reversed, so that a right-handed file looks the
/// same in the left-handed space. Points that coincide in all shapes are merged. An inline mesh is
/// not changed.
///
/// Throws DocumentError, with the object's place and advice, if no file is given, or the file is
/// missing, isn't a mesh, lacks the node, or has no polygons or a point that isn't finite.
void LoadMesh(SceneObject& object, const Document& document, ModelFiles& files);

}  // namespace host
