// What a model file's "extras" say of its nodes.
#pragma once

#include <utility>
#include <vector>

#include "host/base/json_place.h"
#include "host/model/model_file.h"
#include "host/scene/document.h"

namespace host {

/// The roles of one node.
struct NodeRoles {
  const ElementClass* object = nullptr;  ///< null: what the node is by itself
  JsonPlace object_parameters;
  std::vector<std::pair<const ElementClass*, JsonPlace>> tags;
};

/// Reads the roles of the node. Throws DocumentError with the place in the file's text for a name
/// that is no type.
NodeRoles ReadRoles(const ModelFile& file, const aiNode& node, const SceneClasses& classes);

/// Sets an element's parameters from a role. Throws DocumentError, with the place in the text.
void ApplyRole(ElementState& element, const JsonPlace& parameters, const ModelFile& file,
               Document& document);

}  // namespace host
