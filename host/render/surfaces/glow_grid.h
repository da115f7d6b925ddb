// Where post effects glow, coarsely: diffuse surfaces look there more often for light.
//
// Half of the directions of bounced light are drawn from here, half by the cosine, and each is
// weighed by the density of both together (E. Veach and L. Guibas, Optimally combining sampling
// techniques for Monte Carlo rendering, SIGGRAPH 1995): the mean stays what it is, whatever the
// grid holds.
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
  /// The box from low to high in cells that are about cubes. `glow` tells what a stretch of the
  /// given length from a point along an axis (0, 1, 2) sends out.
  GlowGrid(const Vector& low, const Vector& high,
           const std::function<double(const Vector&, int, double)>& glow);

  bool IsEmpty() const { return share_.empty(); }
  /// A point of the grid, each cell as likely as its share of the glow; the numbers from 0 to 1.
  Vector Sample(double cell, double x, double y, double z) const;
  /// How densely directions from a point to points of Sample lie, per solid angle.
  double Density(const Vector& point, const Vector& direction) const;

 private:
  std::size_t Index(const std::array<int, 3>& cell) const {
    return static_cast<std::size_t>((cell[2] * count_[1] + cell[1]) * count_[0] + cell[0]);
  }

  std::array<double, 3> low_{}, edge_{};
  std::array<int, 3> count_{};
  std::vector<double> share_;  ///< of each cell; their sum is 1
  std::vector<double> sum_;    ///< of the shares up to and with the cell
};

}  // namespace host
