// Roles of nodes, from the "extras" of a glTF file.
#pragma once

#include <utility>
#include <vector>

#include "host/base/json_place.h"
#include "host/model/model_file.h"
#include "host/scene/document.h"

namespace host {

/// The roles of one node.
struct NodeRoles {
  const ElementClass* object = nullptr;  ///< null: the node keeps its type
  JsonPlace object_parameters;
  std::vector<std::pair<const ElementClass*, JsonPlace>> tags;
};

/// Reads the roles of the node. Throws DocumentError, with the place in the JSON text, for a name
/// that isn't a type.
NodeRoles ReadRoles(const ModelFile& file, const aiNode& node, const SceneClasses& classes);

/// Sets the parameters of an element from a role. Throws DocumentError with the place in the JSON
/// text.
void ApplyRole(ElementState& element, const JsonPlace& parameters, const ModelFile& file,
               Document& document);

}  // namespace host
