// Radiative transfer by ray bundles: light runs along fixed straight rays, slab by slab through a
// grid, and the cells on its way catch it.
//
// Each of the six faces of the grid sends out D x D directions, at equal angles over a pyramid of
// 90 degrees, so that together they cover the sphere. All rays of a direction are copies of one
// another, moved by whole cells (sweep_rays.h). A ray that leaves the grid sideways comes in again
// on the other side as a new ray, without light.
//
// The scheme is a discrete-ordinates sweep with exact transfer across a cell; cf. S. Chandrasekhar,
// Radiative Transfer (1950), for the discretization in directions.
#pragma once

#include <functional>
#include <vector>

#include "render/shade/field3.h"

namespace nbx {

/// The gas in the cells of the grid, per meter: its extinction, and the part of it in each color
/// that is caught and sent out again.
struct SweepMedium {
  struct Cell {
    float extinction = 0;
    Color scattering{0, 0, 0};
  };
  Vec3i dims{0, 0, 0};
  std::vector<Cell> cells;  // in the order of Field3
};

class SweepGrid {
 public:
  /// `cell_length` in meters, above 0; `directions_per_side` (D) at least 1.
  SweepGrid(const Vec3i& dims, int directions_per_side, double cell_length)
      : dims_(dims), directions_per_side_(directions_per_side), cell_length_(cell_length) {}

  /// One sweep from each face. Adds to `gathered` the light that cells catch of what `source`
  /// (emission per meter) sends out. Calls `slab_done(slabs, of)` on this thread after each slab of
  /// a face. Stops if that returns false, and returns false then.
  /// Same bits for any number of threads; `threads` below 1 means all.
  bool sweep(Field3& gathered, const Field3& source, const SweepMedium& medium, int threads,
             const std::function<bool(int, int)>& slab_done) const;

  /// 1 / (6 D^2 h): the share of the light caught from a ray that a cell sends out again, per
  /// meter.
  double gather_factor() const;

 private:
  Vec3i dims_;
  int directions_per_side_;
  double cell_length_;  // h
};

}  // namespace nbx
