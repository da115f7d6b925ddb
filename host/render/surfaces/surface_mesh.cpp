#include "host/render/surfaces/surface_mesh.h"

#include "host/interface/compositing.h"
#include "host/render/color.h"

namespace host {
namespace {

constexpr double kRoundCosine = 0.766044443118978;  // of 40 degrees

SurfaceMesh::Point ToPoint(const Vector& v) {
  return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

const BaseContainer* CompositingData(const BaseObject& object) {
  const BaseTag* tag = CompositingTag(object);
  return tag ? &tag->GetDataInstance() : nullptr;
}

SurfaceVisibility ReadVisibility(const BaseObject& object) {
  SurfaceVisibility result;
  const BaseContainer* data = CompositingData(object);
  if (!data) return result;
  constexpr std::uint32_t kReflections = kRayReflection | kRayRoughReflection;
  constexpr std::uint32_t kTransparencies = kRayTransparency | kRayRoughTransparency;
  constexpr std::uint32_t kRefractions = kRayRefraction | kRayRoughRefraction;
  const auto hide = [&](std::int32_t parameter, std::uint32_t from) {
    if (!data->GetBool(parameter, true)) result.hidden_from |= from;
  };
  hide(COMPOSITING_SEEN_BY_CAMERA, SurfaceVisibility::kHiddenFromCamera);
  hide(COMPOSITING_SEEN_BY_RAYS, kReflections | kRefractions | kRayIndirect | kRayOcclusion);
  hide(COMPOSITING_SEEN_BY_REFLECTION, kReflections);
  hide(COMPOSITING_SEEN_BY_TRANSPARENCY, kTransparencies);
  hide(COMPOSITING_SEEN_BY_REFRACTION, kRefractions);
  hide(COMPOSITING_SEEN_BY_GI, kRayIndirect);
  hide(COMPOSITING_SEEN_BY_AO, kRayOcclusion);
  result.casts_shadows = data->GetBool(COMPOSITING_CAST_SHADOWS, true);
  return result;
}

SelectionTag* FindSelection(BaseObject& object, const std::string& name) {
  for (BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
    if (SelectionTag* selection = ToSelection(tag); selection && tag->GetName() == name)
      return selection;
  return nullptr;
}

/// The material index of each polygon. Adds the materials to the mesh.
std::vector<std::uint32_t> ReadMaterials(SurfaceMesh& mesh, BaseObject& owner,
                                         std::int32_t polygon_count) {
  mesh.materials.emplace_back();
  std::vector<std::uint32_t> index(polygon_count, 0);
  for (BaseTag* tag : TextureTags(owner)) {
    if (!tag->GetDataInstance().GetLink(TEXTURETAG_MATERIAL)) continue;
    const std::uint32_t material = mesh.materials.size();
    mesh.materials.push_back(ReadMaterial(*tag));
    const std::string selected = tag->GetDataInstance().GetString(TEXTURETAG_SELECTION);
    const SelectionTag* selection = selected.empty() ? nullptr : FindSelection(owner, selected);
    if (!selected.empty() && !selection) continue;
    for (std::int32_t p = 0; p < polygon_count; ++p)
      if (!selection || selection->IsSelected(p)) index[p] = material;
  }
  return index;
}

/// A matte object has one flat color. It isn't lit and doesn't reflect.
void MakeMatte(SurfaceMesh& mesh, const Vector& color) {
  for (SurfaceMaterial& material : mesh.materials) {
    material.color = {};
    material.reflection = {};
    material.emission = {color, nullptr};
  }
}

/// Computes smooth normals: sums the area vectors of adjacent triangles that lie nearly in one
/// plane.
class NormalMaker {
 public:
  NormalMaker(const std::vector<Vector>& points, const std::vector<SurfaceMesh::Corners>& triangles)
      : triangles_(triangles), around_(points.size()) {
    for (std::size_t t = 0; t < triangles.size(); ++t) {
      const auto& [a, b, c] = triangles[t];
      areas_.push_back(Cross(points[b] - points[a], points[c] - points[a]));
      for (const std::uint32_t corner : triangles[t]) around_[corner].push_back(t);
    }
  }

  std::vector<SurfaceMesh::Point> Make(bool turned) const {
    std::vector<SurfaceMesh::Point> normals;
    for (std::size_t t = 0; t < triangles_.size(); ++t)
      for (const std::uint32_t corner : triangles_[t])
        normals.push_back(ToPoint(Sum(t, corner) * (turned ? -1 : 1)));
    return normals;
  }

 private:
  Vector Sum(std::size_t triangle, std::uint32_t corner) const {
    const Vector own = Normalized(areas_[triangle]);
    Vector sum;
    for (const std::uint32_t other : around_[corner])
      if (Dot(own, Normalized(areas_[other])) >= kRoundCosine) sum = sum + areas_[other];
    return Normalized(sum);
  }

  const std::vector<SurfaceMesh::Corners>& triangles_;
  std::vector<std::vector<std::uint32_t>> around_;  ///< triangles at each point
  std::vector<Vector> areas_;
};

}  // namespace

SurfaceMesh ReadMesh(PolygonObject& polygons, BaseObject& owner) {
  SurfaceMesh mesh;
  mesh.owner = &owner;
  mesh.visibility = ReadVisibility(owner);
  const auto materials = ReadMaterials(mesh, owner, polygons.GetPolygonCount());
  if (const BaseContainer* data = CompositingData(owner); data && data->GetBool(COMPOSITING_MATTE))
    MakeMatte(mesh, data->GetVector(COMPOSITING_MATTE_COLOR));
  const UvwPolygon* uvw = polygons.GetUvwR();
  const auto add = [&](std::int32_t p, std::array<std::int32_t, 3> c, std::array<Vector, 3> uv) {
    mesh.triangles.push_back({static_cast<std::uint32_t>(c[0]), static_cast<std::uint32_t>(c[1]),
                              static_cast<std::uint32_t>(c[2])});
    mesh.material.push_back(materials[p]);
    if (uvw) mesh.uvws.push_back(uv);
  };
  for (std::int32_t p = 0; p < polygons.GetPolygonCount(); ++p) {
    const auto [a, b, c, d] = polygons.GetPolygonR()[p];
    const UvwPolygon uv = uvw ? uvw[p] : UvwPolygon{};
    add(p, {a, b, c}, {uv.a, uv.b, uv.c});
    if (c != d) add(p, {a, c, d}, {uv.a, uv.c, uv.d});
  }
  AddStep(mesh, polygons, owner);
  return mesh;
}

bool AddStep(SurfaceMesh& mesh, PolygonObject& polygons, BaseObject& owner) {
  const std::size_t count = polygons.GetPointCount();
  if (!mesh.points.empty() && mesh.points.front().size() != count) return false;
  const Matrix to_world = owner.GetMg();
  std::vector<Vector> world;
  std::vector<SurfaceMesh::Point> points;
  for (std::size_t i = 0; i < count; ++i) {
    world.push_back(to_world * polygons.GetPointR()[i]);
    points.push_back(ToPoint(world.back()));
  }
  mesh.points.push_back(std::move(points));
  mesh.normals.push_back(NormalMaker(world, mesh.triangles).Make(Determinant(to_world) < 0));
  return true;
}

}  // namespace host
