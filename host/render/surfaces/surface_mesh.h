// The triangles of one object in world space while the shutter is open.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "host/interface/video_post.h"
#include "host/render/surfaces/surface_material.h"

namespace host {

/// Which rays can hit a surface.
struct SurfaceVisibility {
  /// Types of rays (RayType) that ignore the surface. kHiddenFromCamera stands for camera rays.
  std::uint32_t hidden_from = 0;
  bool casts_shadows = true;
  static constexpr std::uint32_t kHiddenFromCamera = 1U << 31;

  bool Meets(std::uint32_t ray_type) const {
    return (hidden_from & (ray_type == 0 ? kHiddenFromCamera : ray_type)) == 0;
  }
};

struct SurfaceMesh {
  using Corners = std::array<std::uint32_t, 3>;
  using Point = std::array<float, 3>;

  /// One entry per step of the shutter. The first is the time of the frame.
  std::vector<std::vector<Point>> points;
  /// Unit normals at the corners, on the outer side, three per triangle, one entry per step.
  std::vector<std::vector<Point>> normals;
  std::vector<Corners> triangles;
  std::vector<std::array<Vector, 3>> uvws;  ///< one per triangle; empty without coordinates
  std::vector<std::uint32_t> material;      ///< one per triangle: index into `materials`
  std::vector<SurfaceMaterial> materials;   ///< the first is for surfaces without a material
  SurfaceVisibility visibility;
  const BaseObject* owner = nullptr;

  std::size_t Steps() const { return points.size(); }
};

/// Reads the triangles of the object at the document's time, as a mesh with one step. Edges with an
/// angle below 40 degrees are smoothed.
SurfaceMesh ReadMesh(PolygonObject& polygons, BaseObject& owner);
/// Adds the points and normals at the document's current time as another step. False, without any
/// change, if the polygons don't match the mesh.
bool AddStep(SurfaceMesh& mesh, PolygonObject& polygons, BaseObject& owner);

}  // namespace host
