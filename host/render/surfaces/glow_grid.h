// A coarse grid of where post effects glow. Diffuse surfaces sample it for light.
//
// Half of the directions of bounced light come from this grid, half are cosine-distributed. Each is
// weighted by the combined density (E. Veach and L. Guibas, Optimally combining sampling techniques
// for Monte Carlo rendering, SIGGRAPH 1995). The mean is therefore correct for any contents of the
// grid.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "host/interface/vector.h"

namespace host {

class GlowGrid {
 public:
  /// An empty grid, with no glow.
  GlowGrid() = default;
  /// Divides the box from low to high into cells that are roughly cubes. `glow` returns the light
  /// emitted along a segment: from a point, along an axis (0, 1, 2), with a given length.
  GlowGrid(const Vector& low, const Vector& high,
           const std::function<double(const Vector&, int, double)>& glow);

  bool IsEmpty() const { return share_.empty(); }
  /// A random point of the grid. The probability of a cell is its share of the glow. All arguments
  /// are in [0, 1).
  Vector Sample(double cell, double x, double y, double z) const;
  /// The probability density, per solid angle, of the direction from a point to the points of
  /// Sample.
  double Density(const Vector& point, const Vector& direction) const;

 private:
  std::size_t Index(const std::array<int, 3>& cell) const {
    return (cell[2] * count_[1] + cell[1]) * count_[0] + cell[0];
  }

  std::array<double, 3> low_{}, edge_{};
  std::array<int, 3> count_{};
  std::vector<double> share_;  ///< of each cell; their sum is 1
  std::vector<double> sum_;    ///< cumulative shares, including the cell
};

}  // namespace host
