// Scene documents from the files of modeling programs.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/scene/document.h"

namespace host {

/// Makes a document of a model file: its tree of nodes with their meshes, which stay in the file,
/// lights, cameras, materials, pictures and keyframes; and what the key "nimbrix" in the "extras"
/// of a glTF node says.
///
/// The file's right-handed space becomes the host's: z is negated, and glTF's meters count 100
/// units. Keyframes of rotations are baked to each frame, as three angles.
///
///     "extras": {"nimbrix": {"volume": {"voxel_size": 4}, "emitter": {"solid": 1}}}
///
/// Each name is a type: one of an object makes the node that object, one of a tag puts the tag on
/// it. Below stand the parameters, as in documents, but for whole numbers that serve as bools. A
/// program whose own z points up, and that exports such numbers as its user wrote them, is known by
/// the file's generator: y and z of vectors with a unit are then exchanged.
///
/// `fps` is the rate of the document; a file with animation needs one. Without `force` work beyond
/// the bounds of model_check.h is refused. Throws DocumentError, with
/// the path as given in front: the file can't be read, the rate is missing, or extras are wrong.
std::unique_ptr<Document> ImportModel(const std::string& path, std::optional<FrameRate> fps,
                                      const SceneClasses& classes, bool force = false);

/// True if the file has animation, so that ImportModel needs a rate. False for a file that can't be
/// read.
bool NeedsRate(const std::string& path);

}  // namespace host
