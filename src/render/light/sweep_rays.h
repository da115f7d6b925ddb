// The rays of a sweep: where they start, which way they run, and which cells of a slab they cross.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "render/shade/field3.h"

namespace nbx {

/// A face of the grid. Rays run from it along `axis`: upwards if `sign` is 1, downwards if it is
/// -1.
struct Face {
  int axis, sign;

  /// The axes within the face, in rising order.
  int lateral1() const { return axis == 0 ? 1 : 0; }
  int lateral2() const { return axis == 2 ? 1 : 2; }
};
inline constexpr std::array<Face, 6> kFaces{{{0, 1}, {1, 1}, {2, 1}, {0, -1}, {1, -1}, {2, -1}}};

/// A piece of a ray within one cell.
struct RaySegment {
  Vec3i cell{0, 0, 0};  // relative to the cell of the face in which the ray starts
  double length = 0;    // meters; 0: unused
};

/// The rays of one direction, one for each cell of the face. They are copies of one another, moved
/// by whole cells, so one set of segments serves them all.
struct RayBundle {
  Vec3d direction{0, 0, 0};            // unit vector
  std::array<RaySegment, 3> segments;  // in the current slab
  std::array<std::vector<float>, 3> light;
  std::vector<std::int32_t> generation;  // how often a ray has left the grid sideways
};

/// The per_side^2 directions of a face, at equal angles over a pyramid of 90 degrees.
std::vector<Vec3d> face_directions(const Face& face, int per_side);

/// The segments of a ray from the middle of a cell of the face, in the slab that lies `depth` cells
/// behind the face. `planes` is the number of cells along the face's axis.
std::array<RaySegment, 3> slab_segments(const Vec3d& direction, const Face& face, int planes,
                                        int depth, double cell_length);

}  // namespace nbx
