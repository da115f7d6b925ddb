#include "C4D/sources/solid_sampler.h"

#include "C4D/services/host_conversion.h"
#include "C4D/sources/object_voxelizers.h"
#include "scene/inside_classification.h"
#include "scene/solid_velocities.h"
#include "scene/solid_voxelizer.h"
#include "scene/vcvdt_post_process.h"
#include "util/log.h"
#include "util/stopwatch.h"

namespace nbx {

namespace {

/// Meshes whose points are numbered through all of them.
std::vector<DetachedPolygonObject> detach_indexed(const std::vector<SourceMesh>& meshes) {
  std::vector<DetachedPolygonObject> detached = detach(meshes, -1);
  int index = 0;
  for (DetachedPolygonObject& mesh : detached) {
    mesh.first_id = index;
    index += static_cast<int>(mesh.points.size());
  }
  return detached;
}

}  // namespace

SolidSampler::SolidSampler(host::BaseObject& volume) {
  for (host::BaseTag* tag : find_source_tags(volume.GetDocument()))
    if (is_solid(*tag)) tags_.push_back(tag);
}

/// Motion since the last call, times `scale`, along the axes of the world with z negated, even if
/// the domain is rotated. Keeps where the points are now.
std::vector<Vec3f> SolidSampler::vertex_velocities(const std::vector<SourceMesh>& meshes,
                                                   double scale) {
  std::vector<Vec3d> vertices;
  for (const SourceMesh& source : meshes) {
    const Affine3d to_world = to_affine(source.mesh->GetMg());
    const host::Vector* p = source.mesh->GetPointR();
    for (std::int32_t i = 0; i < source.mesh->GetPointCount(); ++i)
      vertices.push_back(to_world(to_vector(p[i])));
  }
  const bool known = vertices.size() == prev_vertices_.size();
  if (!known && !first_)
    LogMessage() << "WARNING: solid vertex count mismatch: prev=" << prev_vertices_.size()
                 << " next=" << vertices.size();
  std::vector<Vec3f> velocities(vertices.size());
  for (std::size_t i = 0; known && i < vertices.size(); ++i) {
    const Vec3d moved = (vertices[i] - prev_vertices_[i]) * scale;
    velocities[i] = vector_cast<float>(Vec3d(moved[0], moved[1], -moved[2]));
  }
  prev_vertices_ = std::move(vertices);
  first_ = false;
  return velocities;
}

std::vector<SourceMesh> SolidSampler::meshes() const {
  std::vector<SourceMesh> all;
  for (const host::BaseTag* tag : tags_)
    for (const SourceMesh& mesh : solid_meshes(*tag)) all.push_back(mesh);
  return all;
}

Solids SolidSampler::update_solids(const RunView& run, double dt) {
  if (tags_.empty()) return {};
  const std::vector<SourceMesh> meshes = this->meshes();
  const std::vector<Vec3f> velocities =
      vertex_velocities(meshes, dt > 0 ? run.params.unit_scale / dt : 0);
  const Domain& domain = run.domain;
  if (domain.active_box.empty() || meshes.empty()) return {};

  Stopwatch watch;
  const Vec3i dims = domain.center_dims();
  Affine3d to_cells = domain.world_to_grid;
  to_cells.translation -= vector_cast<double>(domain.origin());
  const std::vector<DetachedPolygonObject> detached = detach_indexed(meshes);
  const PolygonWalk walk(detached, to_cells);
  grid_.reset(dims);
  voxelize(grid_, walk);
  LogMessage() << "solid voxelization in " << watch.lap();

  classify_inside(grid_, PolygonObjectContainer(walk, {Vec3i(), dims - Vec3i(1, 1, 1)}));
  LogMessage() << "solid classification in " << watch.lap();

  Solids solids;
  solids.phi = std::make_shared<MField>(kCpu, dims);
  post_process_voxelized(solids.phi->overwrite_cpu(), ids_, grid_);
  LogMessage() << "solid post-process in " << watch.lap();

  solids.u = std::make_shared<MField>(kCpu, domain.face_dims(0));
  solids.v = std::make_shared<MField>(kCpu, domain.face_dims(1));
  solids.w = std::make_shared<MField>(kCpu, domain.face_dims(2));
  set_solid_velocities(solids.u->overwrite_cpu(), solids.v->overwrite_cpu(),
                       solids.w->overwrite_cpu(), solids.phi->read_cpu(), ids_, velocities);
  LogMessage() << "solid velocities in " << watch.lap();
  return solids;
}

}  // namespace nbx
