#include "host/element_class.h"

#include <algorithm>
#include <set>

#include "host/description_check.h"

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

SceneClasses::SceneClasses() {
  static_cast<void>(objects.Add(
      {kNullObject, "Null", {.name = "null", .help = "Groups and moves what lies under it"}, {}}));
  static_cast<void>(objects.Add(
      {kPolygonObject,
       "Mesh",
       {.name = "mesh",
        .help = "Polygons from a file, or given as \"points\" and \"polygons\" beside the name",
        .parameters =
            {{.id = kMeshFile,
              .symbol = "MESH_FILE",
              .type = ParameterType::Filename,
              .default_value = Filename{},
              .help = "OBJ, PLY, STL, glTF, FBX ... file. Files are right-handed with y up: z is "
                      "negated, and the corners of each polygon are put in reverse order",
              .animatable = false},
             {.id = kMeshFileScale,
              .symbol = "MESH_FILE_SCALE",
              .type = ParameterType::Real,
              .default_value = 0.0,
              .minimum = 0,
              .unit = "units",
              .help = "Length of 1 of the file. 0: 100 for glTF, whose 1 is a metre, and 1 for "
                      "all others",
              .animatable = false}}},
       {}}));
}

}  // namespace host
