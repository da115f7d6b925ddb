// All surfaces of a scene at one frame, and ray queries with Embree.
#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "host/render/surfaces/surface_mesh.h"

namespace host {

/// Where a ray hits a surface.
struct SurfaceHit {
  double distance = 0;
  Vector point;
  Vector normal;      ///< of the triangle, on the side of the ray's origin
  Vector smooth;      ///< smooth normal for shading, on the same side
  bool outer = true;  ///< the ray hits the outer side
  Vector uvw;         ///< coordinates of the material
  double offset = 0;  ///< distance from the surface at which a new ray must start
  const SurfaceMaterial* material = nullptr;
  const BaseObject* object = nullptr;
};

struct SurfaceRay {
  Vector origin, direction;  ///< the direction of unit length
  double length = std::numeric_limits<double>::infinity();
  std::uint32_t type = 0;  ///< RayType
  double shutter = 0;      ///< 0 open .. 1 closed
};

/// False for a ray that can't be traced, because it has no direction or its numbers exceed single
/// precision. Such a ray hits nothing and gets no light.
bool IsTraceable(const Vector& origin, const Vector& direction);

/// Built once per frame. The queries may be called from any number of threads.
class SurfaceScene {
 public:
  /// Reads the meshes of all visible objects. If `shutter` (in frames) is above 0, the document is
  /// also evaluated at later times and returns to its current time.
  SurfaceScene(BaseDocument& document, double shutter);
  ~SurfaceScene();
  SurfaceScene(const SurfaceScene&) = delete;
  SurfaceScene& operator=(const SurfaceScene&) = delete;

  /// The nearest surface that this type of ray can hit.
  std::optional<SurfaceHit> Intersect(const SurfaceRay& ray) const;
  /// The fraction of light that passes all surfaces along a shadow ray.
  Vector Passing(const SurfaceRay& ray) const;

  const std::vector<SurfaceMesh>& Meshes() const { return meshes_; }

  struct Handles;  ///< Embree objects, defined in surface_scene.cpp

 private:
  void Commit();

  std::vector<SurfaceMesh> meshes_;
  double time_ = 0;  ///< of the frame, in seconds
  std::unique_ptr<Handles> handles_;
};

/// Calls `at_step` with the document evaluated at each step of the shutter: once, or three times if
/// the shutter is above 0. Afterwards the document is evaluated at the frame again.
void ForShutterSteps(BaseDocument& document, double shutter, const std::function<void()>& at_step);

}  // namespace host
