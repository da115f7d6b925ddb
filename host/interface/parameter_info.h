// Descriptions of classes. There is one table per class, from which the host derives everything
// about parameters: reading and writing scene documents, `--set`, help texts and defaults.
//
// A plug-in passes a description when it registers a class. The host checks and copies it. The
// class needs a name. Names and ids of parameters must exist and be unique. Defaults must have the
// declared type and be within bounds or among the cycle entries. If a check fails, the registration
// fails, and one console line says what is wrong.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "host/interface/base_container.h"

namespace host {

/// The type of a parameter, and its form in a scene document.
enum class ParameterType {
  Bool,      ///< true or false
  Long,      ///< an integer; a name if the parameter has cycle entries
  Real,      ///< a number
  Vector,    ///< [x, y, z]
  Time,      ///< seconds
  String,    ///< text
  Filename,  ///< text; relative to the document's folder
  Link,      ///< name of an element of the document, empty for none
  Curve,     ///< [[x, y], ...]
  Gradient,  ///< [[position, [r, g, b]], ...]
  Links,     ///< [name, ...] of objects, or of tags by their places
  Button,    ///< a button; has no value
};

/// The kind of element that a Link refers to.
enum class LinkTarget { Object, Material, Shader };

/// One choice of a cycle.
struct CycleEntry {
  std::int32_t value = 0;
  std::string name = {};  ///< as written in documents: "add", "preview_range"
};

/// One parameter, for designated initializers:
///     {.id = 1219, .symbol = "OVOLUME_VOXEL_SIZE", .type = ParameterType::Real,
///      .default_value = 1.0, .minimum = 1e-3, .unit = "units", .help = "Edge of a voxel"}
struct ParameterInfo {
  std::int32_t id = 0;
  /// The name in documents is the symbol in lower case, without everything up to the first '_':
  /// "voxel_size".
  std::string symbol = {};
  ParameterType type = ParameterType::Real;
  /// Must be the alternative of `type`: 1.0, not 1, for a Real.
  ParameterValue default_value = 0.0;
  /// For Long and Real, and each component of a Vector. Both bounds are allowed values. The host
  /// clamps user input to them, with a warning.
  double minimum = -std::numeric_limits<double>::infinity();
  double maximum = std::numeric_limits<double>::infinity();
  std::string unit = {};  ///< for people; empty if there is none
  std::vector<CycleEntry> cycle = {};
  LinkTarget target = LinkTarget::Object;  ///< of a Link
  std::string help = {};                   ///< one line
  bool animatable = true;  ///< may have keyframes; only bools, numbers, vectors and times can
  bool stored = true;      ///< is stored in documents; false for display values and buttons
  /// False for parameters that nothing reads yet. Documents may contain them, but help texts, lists
  /// of types and the schema omit them.
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

  /// Names of the parameters that are stored in documents.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const ParameterInfo& info : parameters)
      if (info.stored) names.push_back(info.Name());
    return names;
  }
  /// Null if no stored parameter has that name.
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
