// Reads how a volume object looks from its parameters at the document's time.
#pragma once

#include "host/interface/scene.h"
#include "render/lighting.h"
#include "render/prepare_volume.h"

namespace nbx {

/// Everything but transforms and times.
VolumeParams shading_params(const host::BaseObject& volume);

/// The black body that gives the fire its colors.
BlackbodyParams blackbody_params(const host::BaseObject& volume);

/// The light solver that the user chose; null for unlit smoke. `eye` is the camera in the world.
std::shared_ptr<LightField> make_light_field(const host::BaseObject& volume, const Vec3d& eye);

/// Reads from the compositing tag that applies to the volume which rays don't see it, and its matte
/// color. Without such a tag all rays see it.
void read_compositing(RenderVolume& target, const host::BaseObject& volume);

}  // namespace nbx
