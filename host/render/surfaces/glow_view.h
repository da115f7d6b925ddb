// The glow as seen from one point of a surface.
//
// Importance sampling of many small lights: a brick of the grid is drawn by its emission times the
// cosine over the square of its distance, a cell of the brick by its emission, and a point in the
// cell uniformly. It is one cut through the light tree of A. Conty Estevez and C. Kulla, Importance
// sampling of many lights with adaptive tree splitting, HPG 2018. A walk along a direction gives
// the density of that direction, and the light that the grid expects from it.
#pragma once

#include "host/render/surfaces/glow_mirror.h"

namespace host {

class GlowView {
 public:
  /// `grid` must not be empty and must outlive the view. Both vectors must be finite, the normal of
  /// unit length. With a mirror it is the view in that mirror: all directions are those from the
  /// point to the mirror, and distances count from the point on.
  GlowView(const GlowGrid& grid, const Vector& point, const Vector& normal,
           const GlowMirror* mirror = nullptr);

  /// A random direction to the glow. All arguments are in [0, 1). Must not be called if CanSample
  /// is false.
  Vector Sample(double pick, double x, double y, double z) const;
  /// False if all of the glow is behind the surface.
  bool CanSample() const { return all_ > 0; }
  const GlowMirror* Mirror() const { return mirror_; }

  struct Sight {
    Vector light;        ///< of the grid; above 0 wherever the grid is seen
    double density = 0;  ///< of Sample, per solid angle
  };
  /// What the grid holds in a direction, up to a distance.
  Sight Look(const Vector& direction, double distance = INFINITY) const;
  /// The light of Look, dimmed by what is in front of the grid.
  Vector Expect(const Vector& direction, double distance) const;

 private:
  static constexpr std::size_t kMost =
      GlowGrid::kMostBricks * GlowGrid::kMostBricks * GlowGrid::kMostBricks;

  /// The distance from which on light counts: that to the mirror, or infinity beside the mirror.
  double Beginning(const Vector& direction) const {
    return mirror_ ? mirror_->Distance(from_, direction) : 0;
  }
  Vector Turned(const Vector& direction) const {
    return mirror_ ? mirror_->Turned(direction) : direction;
  }

  const GlowGrid& grid_;
  const GlowMirror* mirror_;
  Vector from_;
  Vector point_;                           ///< from_, or its image
  std::array<float, kMost + 1> geometry_;  ///< cosine over squared distance; 0 for dark bricks
  std::array<float, kMost> sum_;           ///< cumulative chances of the bricks
  float all_ = 0;
};

}  // namespace host
