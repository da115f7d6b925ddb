// Materials of a model file.
#pragma once

#include <vector>

#include "host/model/model_file.h"
#include "host/scene/document.h"

namespace host {

/// Adds the file's materials that its meshes use to the document, with their pictures as textures;
/// one entry for each of the file's, null for one that isn't used.
///
/// Of base color c, metallic m and roughness r of glTF comes the scattered share c (1 - m), the
/// mirrored share 0.04 (1 - m) + c m, and the roughness r.
std::vector<SceneMaterial*> ImportMaterials(const ModelFile& file, Document& document,
                                            const SceneClasses& classes);

}  // namespace host
