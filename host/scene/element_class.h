// The classes that this host knows: the built-in ones and those registered by plug-ins.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/interface/node_data.h"
#include "host/interface/parameter_info.h"

namespace host {

struct ElementClass {
  std::int32_t id = 0;
  std::string display_name;
  ClassDescription description;
  std::function<std::unique_ptr<NodeData>()> make;  ///< empty: the class has no plug-in part
};

/// The classes of one kind. Their addresses are stable.
class ElementClasses {
 public:
  /// Returns an empty text, or what is wrong: the id or the name is taken, or the description is
  /// invalid.
  [[nodiscard]] std::string Add(ElementClass added);

  /// Null if there is none.
  const ElementClass* Find(std::int32_t id) const;
  const ElementClass* Find(const std::string& name) const;

  std::vector<std::string> Names() const;
  const std::deque<ElementClass>& All() const { return classes_; }

 private:
  std::deque<ElementClass> classes_;
};

/// The class of meshes, the same as in every SceneClasses.
const ElementClass& MeshClass();
/// The one class of render settings.
const ElementClasses& RenderClasses();

/// All classes of elements in a scene document.
struct SceneClasses {
  SceneClasses();  ///< adds the built-in classes (builtin_classes.h)
  ElementClasses objects;
  ElementClasses tags;
  ElementClasses post_effects;
  ElementClasses materials;  ///< only one
  ElementClasses shaders;
  const ElementClasses& render = RenderClasses();
  ElementClasses preferences;  ///< not in documents
};

}  // namespace host
