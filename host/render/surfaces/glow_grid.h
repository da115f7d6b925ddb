// A grid of where post effects glow. Surfaces use it to look for light where there is some, and to
// estimate that light.
//
// Each cell holds what a ray meets in it: emission and extinction per unit of length. The grid
// spans only the cells that glow. Coarse cells add noise to a picture, but don't change its mean.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "host/render/surfaces/cell_lattice.h"

namespace host {

class GlowGrid {
 public:
  static constexpr int kBrickSide = 6;    ///< cells along each side of a brick
  static constexpr int kMostBricks = 12;  ///< along the longest side of the grid
  static constexpr int kBrickCells = kBrickSide * kBrickSide * kBrickSide;

  /// The light emitted along a segment, and the fraction of light that passes along it.
  struct Segment {
    Vector light;
    double passing = 1;
  };
  /// Measures a segment from a point along an axis (0, 1, 2) with a given length.
  using Probe = std::function<Segment(const Vector& from, int axis, double length)>;

  /// An empty grid, with no glow.
  GlowGrid() = default;
  /// Finds the glow in the box from low to high.
  GlowGrid(const Vector& low, const Vector& high, const Probe& probe);

  bool IsEmpty() const { return bricks_.empty(); }
  /// True if the ray meets the box of the grid.
  bool IsCrossed(const Vector& origin, const Vector& direction) const {
    return !IsEmpty() && !lattice_.Cross({origin, direction}).IsEmpty();
  }
  /// The middle of the light.
  const Vector& Center() const { return center_; }
  /// Of the box of the grid.
  std::array<Vector, 8> Corners() const {
    std::array<Vector, 8> corners;
    for (int n = 0; n < 8; ++n)
      corners[n] = lattice_.At(n & 1 ? lattice_.count[0] : 0, n & 2 ? lattice_.count[1] : 0,
                               n & 4 ? lattice_.count[2] : 0);
    return corners;
  }

 private:
  friend class GlowView;

  struct Cell {
    Cell() = default;
    /// Of emission and extinction in the places of light and passing.
    explicit Cell(const Segment& medium)
        : emission{Positive(medium.light.x), Positive(medium.light.y), Positive(medium.light.z)},
          extinction(static_cast<float>(medium.passing)) {}
    static float Positive(double x) { return static_cast<float>(std::max(x, 0.0)); }
    std::array<float, 3> emission{};  ///< in three colors, per unit of length
    float extinction = 0;             ///< per unit of length
    float Mean() const { return (emission[0] + emission[1] + emission[2]) / 3; }
  };
  /// A cube of cells that glows enough to get rays.
  struct Brick {
    std::array<int, 3> first{};            ///< its lowest cell
    std::array<float, kBrickCells> sum{};  ///< cumulative emission of its cells
  };
  /// The same cube as a point light.
  struct PointLight {
    float x = 0, y = 0, z = 0, power = 0;
  };
  /// Cells of a box, as they were measured.
  struct Medium {
    CellLattice lattice;
    std::vector<Cell> cells;
  };
  static Medium Divide(const Vector& low, const Vector& high, int most, int side);
  static Medium Survey(const Vector& low, const Vector& high, const Probe& probe);
  void Measure(const Medium& survey, const Probe& probe);
  void FormBricks();
  std::size_t BrickIndex(int i, int j, int k) const {
    const std::array<int, 3>& count = lattice_.count;
    return (static_cast<std::size_t>(k / kBrickSide) * (count[1] / kBrickSide) + j / kBrickSide) *
               (count[0] / kBrickSide) +
           i / kBrickSide;
  }

  CellLattice lattice_;  ///< its counts are multiples of kBrickSide
  std::vector<Cell> cells_;
  std::vector<Brick> bricks_;            ///< along a space-filling curve
  std::vector<PointLight> lights_;       ///< of the bricks
  std::vector<std::uint16_t> brick_of_;  ///< for each cube of cells; bricks_.size() for the others
  Vector center_;                        ///< of the power of the bricks
  double faint_ = 0;  ///< emission that a cell may have although no segment showed it
  /// Coarse cells of the whole box. They dim light on its way to the fine cells.
  Medium haze_;
};

}  // namespace host
