// How the user wants a volume object to look, from its parameters at the document's time.
#pragma once

#include "host/interface/scene.h"
#include "render/lighting.h"
#include "render/prepare_volume.h"

namespace nbx {

/// All but the transforms and times.
VolumeParams shading_params(const host::BaseObject& volume);

/// The glowing body of the volume's fire, from its parameters.
BlackbodyParams blackbody_params(const host::BaseObject& volume);

/// The solver of light that the user chose; empty for unlit smoke. `eye`: the camera, in the world.
std::shared_ptr<LightField> make_light_field(const host::BaseObject& volume, const Vec3d& eye);

/// Which rays don't see the volume, and what it looks like as a matte, from the compositing tag
/// that counts for it. Without such a tag all rays see it.
void read_compositing(RenderVolume& target, const host::BaseObject& volume);

}  // namespace nbx
