// The signed distance to anything visible. Rays use it to cross empty space in few steps.
#pragma once

#include "render/render_volume.h"

namespace nbx {

/// Makes `volume.proximity`, in voxels, with the dimensions of the smoke's color grid, or of the
/// fire's if there is no smoke. There is none if both shaders are off. With R the region of all
/// inner cells that show anything:
///
///     proximity = (outside of R: distance to the nearest cell of R's surface,
///                  inside of R: minus that distance) - 3.5
///
/// The 3.5 voxels are the reach of cubic look-ups. A cell shows something if its extinction is
/// above 1e-5. It also does if neither it nor a neighbor along an axis is that dense, but values
/// between theirs are. If nothing is visible, the distance is 1.75 times the largest dimension
/// everywhere. Distances are exact (P. F. Felzenszwalb and D. P. Huttenlocher, "Distance transforms
/// of sampled functions", Theory of Computing 8, 2012).
///
/// Then calls widen_proximity. Throws std::bad_alloc after a log line.
void build_proximity(RenderVolume& volume);

/// Lowers the proximity by the distance that displacement by velocity and motion blur can move a
/// look-up, as far as it doesn't allow for it yet. Detail noise doesn't count.
void widen_proximity(RenderVolume& volume);

}  // namespace nbx
