// Turns model files into scene documents.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/scene/document.h"

namespace host {

/// Makes a document from a model file: its node tree with meshes (which stay in the file), lights,
/// cameras, materials, pictures and keyframes, and the key "nimbrix" in the "extras" of glTF nodes.
///
/// The right-handed space of the file becomes left-handed by negating z. Lengths in glTF are
/// meters, 100 units each. Rotations get one key per frame, as three angles.
///
///     "extras": {"nimbrix": {"volume": {"voxel_size": 4}, "emitter": {"solid": 1}}}
///
/// Each name is a type. An object type turns the node into that object, a tag type adds that tag.
/// Parameters follow as in scene documents, except that integers are accepted for bools. Files of
/// z-up programs that export extras unconverted are recognized by their generator string: y and z
/// of vectors with a unit are swapped.
///
/// `fps` is the frame rate of the document; it is required for animated files. Files beyond the
/// limits of model_check.h are refused unless `force` is set. Throws DocumentError, with the path
/// as given in front, if the file can't be read, the rate is missing, or the extras are wrong.
std::unique_ptr<Document> ImportModel(const std::string& path, std::optional<FrameRate> fps,
                                      const SceneClasses& classes, bool force = false);

/// True if the file is animated, so that ImportModel needs a rate. False for a file that can't be
/// read.
bool NeedsRate(const std::string& path);

}  // namespace host
