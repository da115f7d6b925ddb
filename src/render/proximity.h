// How far it is to what can be seen: a signed distance, by which rays pass empty space in few
// steps.
#pragma once

#include "render/render_volume.h"

namespace nbx {

/// Makes `volume.proximity`, of the dimensions of the smoke's color grid, or the fire's without
/// smoke; none if neither shader is on. In voxels, and for the grid (not its outer layer) with the
/// cells that show anything as the region R:
///
///     proximity = (outside of R: distance to the nearest cell of R's surface,
///                  inside: minus that distance) - 3.5
///
/// The 3.5 leave room for the reach of cubic look-ups. A cell shows something if its extinction is
/// above 1e-5, or if neither it nor its neighbor along an axis does but values between theirs
/// would. With nothing to see it is 1.75 times the largest dimension everywhere. Distances are
/// exact (P. F. Felzenszwalb and D. P. Huttenlocher, "Distance transforms of sampled functions",
/// Theory of Computing 8, 2012).
///
/// Then it is lowered by how far displacement by velocity and motion blur can move a look-up
/// (widen_proximity). Detail noise isn't counted. Throws std::bad_alloc after a log line.
void build_proximity(RenderVolume& volume);

/// Lowers the proximity by the reach of displacement that it hasn't absorbed yet.
void widen_proximity(RenderVolume& volume);

}  // namespace nbx
