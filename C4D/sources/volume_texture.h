// Textures in space that scale a source.
#pragma once

#include <memory>

#include "host/interface/scene.h"
#include "math/sparse_field.h"
#include "scene/source_texture.h"

namespace nbx {

/// The brightness of the shader of the tag at `time` seconds; null if it has none. Its coordinates
/// are meters from the first cell of the domain along the axes of the grid, so the texture moves
/// with the domain. It is valid until the document is evaluated again.
std::unique_ptr<const VolumeTexture> volume_texture(const host::BaseTag& tag, double time,
                                                    double voxel_size);

/// Multiplies every cell of the blocks by the texture. Throws what the host's textures throw.
void scale_by_texture(SparseField<float, 3>& weights, const VolumeTexture& texture);

}  // namespace nbx
