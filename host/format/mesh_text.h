// Inline meshes and sets of polygons in scene documents.
#pragma once

#include "host/base/json_place.h"
#include "host/scene/element.h"

namespace host {

/// Reads the keys "points", "polygons", "uvs", "weights" and "shapes" of an object. Throws
/// DocumentError.
void ReadMesh(const JsonPlace& json, SceneObject& object);

/// Adds those keys to the JSON of an object. Does nothing for a mesh from a file.
void WriteMesh(const SceneObject& object, Json& json);

/// Reads indices and pairs [first, last], in any order. Throws DocumentError.
IndexRanges ReadRanges(const JsonPlace& json);
Json WriteRanges(const IndexRanges& ranges);

}  // namespace host
