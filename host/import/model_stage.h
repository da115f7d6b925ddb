// Makes a scene that simulates and renders from a model.
#pragma once

#include "host/scene/document.h"

namespace host {

/// Adds to an opened document from a model what it lacks, after the pattern of the scene `start`:
/// a domain around the meshes, an emitter tag on each mesh, lights, a ground below, and a camera
/// that shows the domain. A volume, an emitter, a light or a camera of the model itself wins over
/// those of the pattern. A model without animation also gets the frames of the pattern.
///
/// The domain holds the meshes at all frames, with room around and above for the gas, in at most a
/// million voxels. Everything that is a length, speed or acceleration in the pattern is scaled with
/// the height of the domain, so that the gas moves and looks as it does there.
///
/// Throws DocumentError if the model has neither a mesh nor a volume.
void SetStage(Document& model, const Document& start, const SceneClasses& classes);

}  // namespace host
