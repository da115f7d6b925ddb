// Textures in space that scale a source.
#pragma once

#include "host/interface/scene.h"
#include "math/sparse_field.h"

namespace nbx {

/// Multiplies every cell of the blocks by the brightness of the tag's texture there, at `time`
/// seconds; leaves them alone if it has none. The texture's coordinates are metres from the
/// domain's first cell along the grid's axes, so it goes with the domain.
void scale_by_texture(SparseField<float, 3>& weights, const host::BaseTag& tag, double time,
                      double voxel_size);

}  // namespace nbx
