#include "C4D/emitter_sampler.h"

#include <cmath>

#include "C4D/host_conversion.h"
#include "C4D/volume_grid.h"
#include "C4D/volume_parameters.h"
#include "C4D/volume_tag.h"

namespace nbx {

namespace {

// A source that jumps across the scene, as at a cut, must not hold up the run.
constexpr double kMostSourceSubsteps = 1024;

constexpr double kSmallestThickness = 1.7320508075688772;  // the diagonal of a cell

bool switched_on(const host::BaseObject* object) {
  for (; object; object = object->GetUp())
    if (!object->GetDeformMode()) return false;
  return true;
}

void find_tags(host::BaseObject* object, std::vector<host::BaseTag*>& tags) {
  for (; object; object = object->GetNext()) {
    for (host::BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext())
      if (tag->GetType() == kVolumeTag && tag->GetDataInstance().GetBool(TVOLUME_ENABLED, true))
        tags.push_back(tag);
    find_tags(object->GetDown(), tags);
  }
}

/// The tag's amounts; what is added comes as the share of `frames`.
SimulationObjectParameters source_parameters(const host::BaseContainer& p, double frames) {
  SimulationObjectParameters source;
  const auto channel = [&](int key, std::int32_t amount, std::int32_t mode) {
    source.amounts[key] = p.GetReal(amount);
    if (p.GetLong(mode, TVOLUME_MODE_SET) != TVOLUME_MODE_ADD) return;
    source.add_keys.insert(key);
    source.amounts[key] *= frames;
  };
  channel(kDensity, TVOLUME_DENSITY, TVOLUME_DENSITY_MODE);
  channel(kTemperature, TVOLUME_TEMPERATURE, TVOLUME_TEMPERATURE_MODE);
  channel(kFuel, TVOLUME_FUEL, TVOLUME_FUEL_MODE);
  channel(kBurn, TVOLUME_BURN, TVOLUME_BURN_MODE);
  source.amounts[kExpansion] = p.GetReal(TVOLUME_EXPANSION);  // a rate: the same in every substep
  return source;
}

Affine3d mesh_to_cells(const host::PolygonObject& mesh, const Affine3d& world_to_cells) {
  return world_to_cells * to_affine(mesh.GetMg());
}

}  // namespace

std::vector<host::PolygonObject*> gather_polygon_objects(host::BaseObject& object) {
  std::vector<host::PolygonObject*> meshes;
  std::vector<host::BaseObject*> stack{&object};
  while (!stack.empty()) {
    host::BaseObject* top = stack.back();
    stack.pop_back();
    if (!top->GetDeformMode()) continue;
    if (host::PolygonObject* mesh = host::ToPoly(top)) meshes.push_back(mesh);
    for (host::BaseObject* child = top->GetDown(); child; child = child->GetNext())
      stack.push_back(child);
  }
  return meshes;
}

void add_triangles(std::vector<VoxelizationTriangle>& triangles, const host::PolygonObject& mesh,
                   const Affine3d& world_to_cells) {
  const Affine3d to_cells = mesh_to_cells(mesh, world_to_cells);
  const auto corner = [&, points = mesh.GetPointR()](std::int32_t i) {
    return vector_cast<float>(to_cells(to_vector(points[i])));
  };
  for (std::int32_t i = 0; i < mesh.GetPolygonCount(); ++i) {
    const host::CPolygon& polygon = mesh.GetPolygonR()[i];
    const Vec3f a = corner(polygon.a), c = corner(polygon.c);
    triangles.push_back({a, c, corner(polygon.b)});
    if (polygon.c != polygon.d) triangles.push_back({a, corner(polygon.d), c});
  }
}

EmitterSampler::EmitterSampler(host::BaseObject& volume) : volume_(volume) {
  find_tags(volume.GetDocument().GetFirstObject(), tags_);
}

/// All points of all sources, in cells.
void EmitterSampler::collect_points(std::vector<Vec3d>& points, double voxel_size) {
  points.clear();
  const Affine3d world_to_cells = volume_grid(volume_, voxel_size).world_to_grid;
  for (host::BaseTag* tag : tags_)
    for (const host::PolygonObject* mesh : gather_polygon_objects(*tag->GetObject())) {
      const Affine3d to_cells = mesh_to_cells(*mesh, world_to_cells);
      const host::Vector* p = mesh->GetPointR();
      for (std::int32_t i = 0; i < mesh->GetPointCount(); ++i)
        points.push_back(to_cells(to_vector(p[i])));
    }
}

/// One for each cell that the fastest point moves, one at least.
int EmitterSampler::source_substeps(const SimSettings& settings, double start, double duration) {
  const std::int32_t wanted = volume_.GetDataInstance().GetLong(OVOLUME_SOURCE_SUBSTEPS);
  if (wanted > 0) return wanted;
  if (duration <= 0) return 1;
  evaluate(volume_.GetDocument(), start);
  collect_points(start_points_, settings.voxel_size);
  evaluate(volume_.GetDocument(), start + duration);
  collect_points(end_points_, settings.voxel_size);

  double farthest = 0;  // squared
  const std::size_t n = std::min(start_points_.size(), end_points_.size());
  for (std::size_t i = 0; i < n; ++i) {
    const Vec3d moved = end_points_[i] - start_points_[i];
    farthest = std::max(farthest, dot(moved, moved));
  }
  return static_cast<int>(std::clamp(std::ceil(std::sqrt(farthest)), 1.0, kMostSourceSubsteps));
}

void EmitterSampler::update_inputs(Simulation3D& sim, double frame_start, double dt) {
  SimSettings& settings = sim.settings;
  const double length = settings.sim_time.length.value();
  const double to_document = length > 0 ? settings.frame_duration / length : 0;
  const double start = frame_start + settings.frame_elapsed * to_document;
  const double duration = dt * to_document;

  const int n = source_substeps(settings, start, duration);
  for (int i = 1; i <= n; ++i) {
    evaluate(volume_.GetDocument(), start + i * duration / n);
    settings.world_to_grid = volume_grid(volume_, settings.voxel_size).world_to_grid;
    for (auto tag = tags_.rbegin(); tag != tags_.rend(); ++tag)
      sample(sim, **tag, duration / n / settings.frame_duration);
  }
}

/// One source at the document's time, which lasts for a share of a frame.
void EmitterSampler::sample(Simulation3D& sim, host::BaseTag& tag, double frames) {
  if (!switched_on(tag.GetObject())) return;
  const host::BaseContainer& p = tag.GetDataInstance();
  const SimulationObjectParameters source = source_parameters(p, frames);
  if (!has_emission(source)) return;

  triangles_.clear();
  for (const host::PolygonObject* mesh : gather_polygon_objects(*tag.GetObject()))
    add_triangles(triangles_, *mesh, sim.settings.world_to_grid);
  const double thickness = p.GetReal(TVOLUME_THICKNESS, 1) / sim.settings.voxel_size;
  weights_.clear();
  voxelize(weights_, triangles_, sim.settings.domain_box,
           {std::max(thickness, kSmallestThickness)});
  sim.add_source_object(source, weights_);
}

}  // namespace nbx
