#include "C4D/object_voxelizers.h"

#include "C4D/host_conversion.h"
#include "host/interface/material.h"

namespace nbx {

namespace {

// Edge of the pictures of materials, in texels.
constexpr int kTexels = 256;

/// The last texture tag of the object or, if it has none, of the nearest one above that has.
host::BaseTag* texture_tag(host::BaseObject* object) {
  for (; object; object = object->GetUp()) {
    host::BaseTag* last = nullptr;
    for (host::BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext())
      if (tag->GetType() == host::kTextureTag) last = tag;
    if (last) return last;
  }
  return nullptr;
}

std::shared_ptr<const SurfaceTexture> picture(const host::BaseTag& tag, int channel, double time) {
  const host::BaseContainer& p = tag.GetDataInstance();
  const auto* material =
      dynamic_cast<const host::BaseMaterial*>(p.GetLink(host::TEXTURETAG_MATERIAL));
  if (!material || !material->HasChannel(channel)) return nullptr;
  auto texture = std::make_shared<SurfaceTexture>();
  texture->width = texture->height = kTexels;
  texture->offset = {p.GetReal(host::TEXTURETAG_OFFSET_U), p.GetReal(host::TEXTURETAG_OFFSET_V)};
  texture->size = {p.GetReal(host::TEXTURETAG_LENGTH_U, 1),
                   p.GetReal(host::TEXTURETAG_LENGTH_V, 1)};
  texture->mirrored = p.GetBool(host::TEXTURETAG_MIRROR);
  texture->texels.resize(std::size_t{kTexels} * kTexels);
#pragma omp parallel for schedule(static)
  for (int j = 0; j < kTexels; ++j)
    for (int i = 0; i < kTexels; ++i) {
      const host::Vector uvw{(i + 0.5) / kTexels, (j + 0.5) / kTexels, 0};
      texture->texels[static_cast<std::size_t>(j) * kTexels + static_cast<std::size_t>(i)] =
          static_cast<float>(host::Brightness(material->SampleChannel(channel, uvw, time)));
    }
  return texture;
}

Vec3f texture_coordinate(const host::Vector& v) { return vector_cast<float>(to_vector(v)); }

}  // namespace

std::shared_ptr<const SurfaceTexture> SurfaceTextures::find(host::BaseObject& object) {
  const host::BaseTag* tag = texture_tag(&object);
  if (!tag) return nullptr;
  const auto [at, fresh] = made_.try_emplace(tag);
  if (fresh) at->second = picture(*tag, channel_, time_);
  return at->second;
}

DetachedPolygonObject detach(const SourceMesh& source, SurfaceTextures* textures) {
  host::PolygonObject& mesh = *source.mesh;
  DetachedPolygonObject detached;
  detached.to_world = to_affine(mesh.GetMg());
  const auto points = static_cast<std::size_t>(mesh.GetPointCount());
  detached.points.reserve(points);
  for (std::size_t i = 0; i < points; ++i)
    detached.points.push_back(to_vector(mesh.GetPointR()[i]));
  if (const float* weights = mesh.GetWeightR())
    detached.corner_weights.assign(weights, weights + points);

  const auto polygons = static_cast<std::size_t>(mesh.GetPolygonCount());
  detached.polygons.reserve(polygons);
  for (std::size_t i = 0; i < polygons; ++i) {
    const host::CPolygon& p = mesh.GetPolygonR()[i];
    detached.polygons.push_back({p.a, p.b, p.c, p.d});
  }
  if (source.selection) {
    detached.selection.resize(polygons);
    for (std::size_t i = 0; i < polygons; ++i)
      detached.selection[i] = source.selection->IsSelected(static_cast<std::int32_t>(i));
  }
  if (!textures) return detached;

  detached.texture = textures->find(mesh);
  if (const host::UvwPolygon* uvw = mesh.GetUvwR(); uvw && detached.texture) {
    detached.uvw.reserve(polygons);
    for (std::size_t i = 0; i < polygons; ++i)
      detached.uvw.push_back({texture_coordinate(uvw[i].a), texture_coordinate(uvw[i].b),
                              texture_coordinate(uvw[i].c), texture_coordinate(uvw[i].d)});
  }
  return detached;
}

std::vector<DetachedPolygonObject> detach(const std::vector<SourceMesh>& meshes,
                                          SurfaceTextures* textures) {
  std::vector<DetachedPolygonObject> detached;
  detached.reserve(meshes.size());
  for (const SourceMesh& mesh : meshes) detached.push_back(detach(mesh, textures));
  return detached;
}

}  // namespace nbx
