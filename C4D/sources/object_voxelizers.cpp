#include "C4D/sources/object_voxelizers.h"

#include <memory>

#include "C4D/services/host_conversion.h"
#include "host/interface/material.h"

namespace nbx {

namespace {

/// A channel of a material, placed on a mesh by a texture tag.
class MaterialPicture final : public SurfaceTexture {
 public:
  MaterialPicture(const host::BaseMaterial& material, int channel, const host::BaseTag& tag)
      : material_(material),
        channel_(channel),
        placement_(tag.GetDataInstance()),
        time_(tag.GetDocument().GetTime().Get()) {}

  float value(const Vec3f& uvw) const override {
    host::Vector at{uvw[0], uvw[1], 0};
    if (!placement_.Place(at)) return 0;
    return static_cast<float>(host::Brightness(material_.SampleChannel(channel_, at, time_)));
  }

 private:
  const host::BaseMaterial& material_;
  const int channel_;
  const host::TexturePlacement placement_;
  const double time_;
};

/// The last texture tag of the object, or of the nearest parent that has one.
host::BaseTag* texture_tag(host::BaseObject* object) {
  for (; object; object = object->GetUp()) {
    host::BaseTag* last = nullptr;
    for (host::BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext())
      if (tag->GetType() == host::kTextureTag) last = tag;
    if (last) return last;
  }
  return nullptr;
}

/// Null if the object has no material with the channel.
std::shared_ptr<const SurfaceTexture> picture(host::BaseObject& object, int channel) {
  const host::BaseTag* tag = channel < 0 ? nullptr : texture_tag(&object);
  if (!tag) return nullptr;
  const auto* material = dynamic_cast<const host::BaseMaterial*>(
      tag->GetDataInstance().GetLink(host::TEXTURETAG_MATERIAL));
  if (!material || !material->HasChannel(channel)) return nullptr;
  return std::make_shared<MaterialPicture>(*material, channel, *tag);
}

Vec3f texture_coordinate(const host::Vector& v) { return vector_cast<float>(to_vector(v)); }

}  // namespace

DetachedPolygonObject detach(const SourceMesh& source, int channel) {
  host::PolygonObject& mesh = *source.mesh;
  DetachedPolygonObject detached;
  detached.to_world = to_affine(mesh.GetMg());
  const std::size_t points = mesh.GetPointCount();
  detached.points.reserve(points);
  for (std::size_t i = 0; i < points; ++i)
    detached.points.push_back(to_vector(mesh.GetPointR()[i]));
  if (const float* weights = mesh.GetWeightR())
    detached.corner_weights.assign(weights, weights + points);

  const std::size_t polygons = mesh.GetPolygonCount();
  detached.polygons.reserve(polygons);
  for (std::size_t i = 0; i < polygons; ++i) {
    const host::CPolygon& p = mesh.GetPolygonR()[i];
    detached.polygons.push_back({p.a, p.b, p.c, p.d});
  }
  if (source.selection) {
    detached.selection.resize(polygons);
    for (std::size_t i = 0; i < polygons; ++i)
      detached.selection[i] = source.selection->IsSelected(i);
  }

  detached.texture = picture(mesh, channel);
  if (const host::UvwPolygon* uvw = mesh.GetUvwR(); uvw && detached.texture) {
    detached.uvw.reserve(polygons);
    for (std::size_t i = 0; i < polygons; ++i)
      detached.uvw.push_back({texture_coordinate(uvw[i].a), texture_coordinate(uvw[i].b),
                              texture_coordinate(uvw[i].c), texture_coordinate(uvw[i].d)});
  }
  return detached;
}

std::vector<DetachedPolygonObject> detach(const std::vector<SourceMesh>& meshes, int channel) {
  std::vector<DetachedPolygonObject> detached;
  detached.reserve(meshes.size());
  for (const SourceMesh& mesh : meshes) detached.push_back(detach(mesh, channel));
  return detached;
}

}  // namespace nbx
