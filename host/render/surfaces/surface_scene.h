// All surfaces of a scene at one frame, and rays through them, by Embree.
#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "host/render/surfaces/surface_mesh.h"

namespace host {

/// Where a ray meets a surface.
struct SurfaceHit {
  double distance = 0;
  Vector point;
  Vector normal;      ///< of the triangle, on the side that the ray comes from
  Vector smooth;      ///< for shading, on the same side
  bool outer = true;  ///< the ray comes from the outer side
  Vector uvw;         ///< as Place of the material gave it
  double offset = 0;  ///< how far a new ray has to start from the surface
  const SurfaceMaterial* material = nullptr;
  const BaseObject* object = nullptr;
};

struct SurfaceRay {
  Vector origin, direction;  ///< the direction of unit length
  double length = std::numeric_limits<double>::infinity();
  std::uint32_t type = 0;  ///< RayType
  double shutter = 0;      ///< 0 open .. 1 closed
};

/// False for a ray that can't be followed, since a scene of absurd size gave it numbers that single
/// precision doesn't have, or no direction. It meets nothing and brings no light.
bool IsTraceable(const Vector& origin, const Vector& direction);

/// Built once per frame, then asked from any number of threads.
class SurfaceScene {
 public:
  /// Takes the meshes of all visible objects. With `shutter` above 0, in frames, the
  /// document is evaluated at further times, and stands at its present time again in the end.
  SurfaceScene(BaseDocument& document, double shutter);
  ~SurfaceScene();
  SurfaceScene(const SurfaceScene&) = delete;
  SurfaceScene& operator=(const SurfaceScene&) = delete;

  /// The nearest surface that the ray's type meets.
  std::optional<SurfaceHit> Intersect(const SurfaceRay& ray) const;
  /// The share of light that passes all surfaces along a ray to a light.
  Vector Passing(const SurfaceRay& ray) const;

  const std::vector<SurfaceMesh>& Meshes() const { return meshes_; }

  struct Handles;  ///< Embree's; complete in surface_scene.cpp alone

 private:
  void Commit();

  std::vector<SurfaceMesh> meshes_;
  double time_ = 0;  ///< of the frame, in seconds
  std::unique_ptr<Handles> handles_;
};

/// Runs `at_step` with the document evaluated at each of the shutter's steps: once, or thrice if
/// the shutter is above 0. Afterwards the document stands at the frame again.
void ForShutterSteps(BaseDocument& document, double shutter, const std::function<void()>& at_step);

}  // namespace host
