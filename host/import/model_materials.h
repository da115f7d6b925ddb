// Materials of a model file.
#pragma once

#include <vector>

#include "host/model/model_file.h"
#include "host/scene/document.h"

namespace host {

/// Adds the materials that the meshes of the file use to the document, and their pictures as
/// textures. Returns one entry per material of the file, null for unused ones.
///
/// For base color c, metallic m and roughness r of glTF, the diffuse color is c (1 - m), the
/// reflection is 0.04 (1 - m) + c m, and the roughness is r.
std::vector<SceneMaterial*> ImportMaterials(const ModelFile& file, Document& document,
                                            const SceneClasses& classes);

}  // namespace host
