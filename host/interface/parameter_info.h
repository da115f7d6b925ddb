// Descriptions of classes: the one table per class from which the host makes everything that is
// about parameters: reading and writing scene documents, `--set`, help texts, defaults.
//
// A plug-in hands a description in at the registration of an object or a tag. The host copies it,
// after a check: a class name; names and ids of parameters that are there and unique; defaults of
// the stated type, within their bounds or among the cycle entries. A description that fails is a
// failed registration, with one line on the console that says what is wrong.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "host/interface/base_container.h"

namespace host {

/// What a parameter is in a container, and how it stands in a scene document.
enum class ParameterType {
  Bool,      ///< true or false
  Long,      ///< a whole number; by name if the parameter has cycle entries
  Real,      ///< a number
  Vector,    ///< [x, y, z]
  Time,      ///< seconds
  String,    ///< text
  Filename,  ///< text; relative to the document's folder
  Link,      ///< name of an object of the document, empty for none
  Curve,     ///< [[x, y], ...]
  Gradient,  ///< [[position, [r, g, b]], ...]
  Links,     ///< [name, ...] of objects, or of tags by their places
  Button,    ///< something to press; has no value
};

/// What a Link may name.
enum class LinkTarget { Object, Material, Shader };

/// One choice of a cycle.
struct CycleEntry {
  std::int32_t value = 0;
  std::string name = {};  ///< as written in documents: "add", "preview_range"
};

/// One parameter. Made for designated initializers:
///     {.id = 1219, .symbol = "OVOLUME_VOXEL_SIZE", .type = ParameterType::Real,
///      .default_value = 1.0, .minimum = 1e-3, .unit = "units", .help = "Edge of a voxel"}
struct ParameterInfo {
  std::int32_t id = 0;
  /// The name in documents is this in lower case, without what stands before the first '_' and
  /// without that: "voxel_size".
  std::string symbol = {};
  ParameterType type = ParameterType::Real;
  /// Of the alternative that `type` names: 1.0, not 1, for a Real.
  ParameterValue default_value = 0.0;
  /// For Long and Real, and each component of a Vector. Both ends are allowed values; the host
  /// takes the nearer end for what the user writes beyond them, with a warning.
  double minimum = -std::numeric_limits<double>::infinity();
  double maximum = std::numeric_limits<double>::infinity();
  std::string unit = {};  ///< for people; empty if the number has none
  std::vector<CycleEntry> cycle = {};
  LinkTarget target = LinkTarget::Object;  ///< of a Link
  std::string help = {};                   ///< one line
  bool animatable = true;  ///< may have keyframes; only numbers, vectors, times and bools have some
  bool stored = true;      ///< stands in documents; false for what a panel only shows, and buttons
  /// False for what no part of the program reads yet: documents may hold it, while help texts,
  /// lists of types and the schema leave it out.
  bool listed = true;

  /// The name in documents.
  std::string Name() const {
    std::string name = symbol.substr(symbol.find('_') + 1);
    for (char& c : name)
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return name;
  }
};

struct ClassDescription {
  std::string name = {};  ///< as the "type" in documents: "volume", "emitter"
  std::string help = {};  ///< one line
  std::vector<ParameterInfo> parameters = {};

  /// Names of the parameters that stand in documents.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const ParameterInfo& info : parameters)
      if (info.stored) names.push_back(info.Name());
    return names;
  }
  /// Null if no parameter of that name stands in documents.
  const ParameterInfo* Find(const std::string& parameter) const {
    for (const ParameterInfo& info : parameters)
      if (info.stored && info.Name() == parameter) return &info;
    return nullptr;
  }
  const ParameterInfo* Find(std::int32_t id) const {
    for (const ParameterInfo& info : parameters)
      if (info.id == id) return &info;
    return nullptr;
  }
};

}  // namespace host
