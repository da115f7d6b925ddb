// The triangles of one object in world space, over the time that the shutter is open.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "host/interface/video_post.h"
#include "host/render/surfaces/surface_material.h"

namespace host {

/// Which rays meet a surface.
struct SurfaceVisibility {
  /// Classes of rays (RayType) that pass it; kHiddenFromCamera stands for camera rays.
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

  /// One entry for each step of the shutter; the first is the frame's own time.
  std::vector<std::vector<Point>> points;
  /// Unit normals of the triangles' corners, on the outer side, three a triangle; steps as above.
  std::vector<std::vector<Point>> normals;
  std::vector<Corners> triangles;
  std::vector<std::array<Vector, 3>> uvws;  ///< a triangle; empty without coordinates
  std::vector<std::uint32_t> material;      ///< a triangle: index into `materials`
  std::vector<SurfaceMaterial> materials;   ///< the first is that of bare surfaces
  SurfaceVisibility visibility;
  const BaseObject* owner = nullptr;

  std::size_t Steps() const { return points.size(); }
};

/// The object's triangles as they are at the document's time, as a mesh of one step. Polygons that
/// meet at less than 40 degrees look round.
SurfaceMesh ReadMesh(PolygonObject& polygons, BaseObject& owner);
/// Adds the object's points and normals at the document's present time as a further step. False,
/// and nothing happens, if the polygons aren't those of the mesh.
bool AddStep(SurfaceMesh& mesh, PolygonObject& polygons, BaseObject& owner);

}  // namespace host
