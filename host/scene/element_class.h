// The classes of objects and tags that this host knows: its own, and what plug-ins register.
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

/// The classes of one kind. They keep their addresses.
class ElementClasses {
 public:
  /// An empty text, or what is wrong: the id or the name is taken, or the description is bad.
  [[nodiscard]] std::string Add(ElementClass added);

  /// Null if there is none.
  const ElementClass* Find(std::int32_t id) const;
  const ElementClass* Find(const std::string& name) const;

  std::vector<std::string> Names() const;
  const std::deque<ElementClass>& All() const { return classes_; }

 private:
  std::deque<ElementClass> classes_;
};

/// The mesh, as in all SceneClasses.
const ElementClass& MeshClass();
/// The one class of render settings.
const ElementClasses& RenderClasses();

/// All that a scene document can hold.
struct SceneClasses {
  SceneClasses();  ///< the host's own (own_classes.h)
  ElementClasses objects;
  ElementClasses tags;
  ElementClasses post_effects;
  ElementClasses materials;  ///< one
  ElementClasses shaders;
  const ElementClasses& render = RenderClasses();
  ElementClasses preferences;  ///< not in documents
};

}  // namespace host
