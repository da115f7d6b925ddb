#include "host/scene/element_class.h"

#include <algorithm>

#include "host/scene/description_check.h"

namespace host {

std::string ElementClasses::Add(ElementClass added) {
  if (Find(added.id)) return "the id " + std::to_string(added.id) + " is taken";
  if (Find(added.description.name)) return "the name " + added.description.name + " is taken";
  const std::string wrong = WhatIsWrong(added.description);
  if (wrong.empty()) classes_.push_back(std::move(added));
  return wrong;
}

const ElementClass* ElementClasses::Find(std::int32_t id) const {
  const auto found = std::find_if(classes_.begin(), classes_.end(),
                                  [&](const ElementClass& c) { return c.id == id; });
  return found == classes_.end() ? nullptr : &*found;
}

const ElementClass* ElementClasses::Find(const std::string& name) const {
  const auto found = std::find_if(classes_.begin(), classes_.end(), [&](const ElementClass& c) {
    return c.description.name == name;
  });
  return found == classes_.end() ? nullptr : &*found;
}

std::vector<std::string> ElementClasses::Names() const {
  std::vector<std::string> names;
  for (const ElementClass& c : classes_) names.push_back(c.description.name);
  return names;
}

}  // namespace host
