// Flat mirrors, in which surfaces see an image of the glow.
//
// Light that goes from the glow over a mirror to a surface arrives as if it came straight from the
// glow to the image of the surface behind the mirror. So it is sampled in the same way.
#pragma once

#include <array>
#include <vector>

#include "host/render/surfaces/glow_grid.h"
#include "host/render/surfaces/surface_scene.h"

namespace host {

/// All triangles of one object that lie in a plane, with one mirroring material.
class GlowMirror {
 public:
  bool IsHit(const SurfaceHit& hit) const;
  /// The distance along a ray to the rectangle around the mirror; infinite if the ray misses it.
  double Distance(const Vector& origin, const Vector& direction) const;
  Vector Image(const Vector& point) const { return point - normal_ * (2 * Height(point)); }
  /// The image of a direction.
  Vector Turned(const Vector& direction) const {
    return direction - normal_ * (2 * Dot(direction, normal_));
  }
  /// False if no point of the grid is seen in the mirror from there.
  bool Shows(const GlowGrid& grid, const Vector& point) const;

 private:
  friend std::vector<GlowMirror> FindGlowMirrors(const SurfaceScene& scene);

  GlowMirror(const SurfaceMesh& mesh, std::size_t triangle);
  /// False if the triangle isn't in the plane.
  bool Add(const SurfaceMesh& mesh, std::size_t triangle);
  double Height(const Vector& point) const { return Dot(point - origin_, normal_); }
  Vector Corner(int n) const;

  const SurfaceMaterial* material_;
  const BaseObject* object_;
  Vector origin_, normal_;                ///< of the plane
  std::array<Vector, 2> axes_;            ///< of the rectangle
  std::array<double, 2> low_{}, high_{};  ///< of the rectangle, from the origin along its axes
  double area_ = 0;
  double tolerance_ = 0;  ///< distance from the plane that is due to rounding
};

/// The largest mirrors of the scene. Others are found by chance.
std::vector<GlowMirror> FindGlowMirrors(const SurfaceScene& scene);

}  // namespace host
