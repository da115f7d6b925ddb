#include "C4D/sources/emitter_sampler.h"

#include <algorithm>
#include <cmath>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_tag_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/source_parameters.h"
#include "C4D/settings/volume_grid.h"
#include "C4D/sources/object_voxelizers.h"
#include "C4D/sources/particle_sources.h"
#include "C4D/sources/source_substeps.h"
#include "C4D/sources/volume_texture.h"
#include "scene/cell_center_voxelizer.h"
#include "scene/inside_classification.h"
#include "scene/velocity_voxelizer.h"

namespace nbx {

namespace {

/// The cells that the meshes of a solid reach into, of the whole domain at most.
IntBox solid_box(const host::BaseTag& tag, const SimSettings& settings) {
  IntBox box;
  for (const SourceMesh& source : solid_meshes(tag)) {
    const Affine3d to_cells = settings.world_to_grid * to_affine(source.mesh->GetMg());
    const Vec3d center = to_vector(source.mesh->GetMp()), radius = to_vector(source.mesh->GetRad());
    for (int corner = 0; corner < 8; ++corner) {
      Vec3d at = center;
      for (int a = 0; a < 3; ++a) at[a] += (corner >> a & 1 ? 1 : -1) * radius[a];
      at = to_cells(at);
      IntBox cells;
      for (int a = 0; a < 3; ++a) {
        // What lies far outside must not leave the range of int.
        const double x = std::clamp(at[a], -1.0, settings.domain_box.hi[a] + 1.0);
        cells.lo[a] = static_cast<int>(std::floor(x));
        cells.hi[a] = static_cast<int>(std::ceil(x));
      }
      box = box_union(box, cells);
    }
  }
  return box_intersection(box, settings.domain_box);
}

}  // namespace

EmitterSampler::EmitterSampler(host::BaseObject& volume)
    : volume_(volume), tags_(find_source_tags(volume.GetDocument())) {}

bool EmitterSampler::has_solids() const {
  return std::any_of(tags_.begin(), tags_.end(),
                     [](const host::BaseTag* tag) { return is_solid(*tag); });
}

void EmitterSampler::update_inputs(Simulation3D& sim, double frame_start, double dt) {
  SimSettings& settings = sim.settings;
  const double length = settings.sim_time.length.value();
  const double to_document = length > 0 ? settings.frame_duration / length : 0;
  const double start = frame_start + settings.frame_elapsed * to_document;
  const double duration = dt * to_document;

  const int n = source_substeps(volume_, tags_, settings.voxel_size, start, start + duration);
  for (int i = 1; i <= n; ++i) {
    evaluate(volume_.GetDocument(), start + i * duration / n);
    settings.world_to_grid = volume_grid(volume_, settings.voxel_size).world_to_grid;
    for (auto tag = tags_.rbegin(); tag != tags_.rend(); ++tag)
      sample(sim, **tag, duration / n / settings.frame_duration);
  }
  for (const host::BaseTag* tag : tags_)
    if (is_solid(*tag)) sim.keep_box = box_union(sim.keep_box, solid_box(*tag, settings));
}

/// One source at the document's time, which lasts for a share of a frame.
void EmitterSampler::sample(Simulation3D& sim, host::BaseTag& tag, double frames) {
  host::BaseObject* object = source_object(tag);
  if (!object) return;
  const SimulationObjectParameters source = source_parameters(tag, sim.settings, frames);
  weights_.clear();
  if (has_emission(source) || source.normal_force != 0) add_meshes(sim, tag, source);
  add_particle_sources(sim, weights_, *object, source);
  if (source.fill) weights_.clear_blocks_le(0);
  sim.add_source_object(source, weights_);
}

void EmitterSampler::add_meshes(Simulation3D& sim, const host::BaseTag& tag,
                                const SimulationObjectParameters& source) {
  const IntBox& box = sim.settings.domain_box;
  const int channel = surface_channel(tag);
  const std::vector<DetachedPolygonObject> meshes = detach(source_meshes(tag), channel);
  if (meshes.empty()) return;
  const PolygonWalk walk(meshes, source.world_to_grid);
  const auto texture = volume_texture(tag, source.time, sim.settings.voxel_size);
  ThicknessProfile profile{source.thickness, channel >= 0,
                           ParameterReader(tag)(TVOLUME.CORNER_WEIGHTS)};
  if (has_emission(source)) {
    const bool whole = ParameterReader(tag)(TVOLUME.SELECTIONS).empty();
    if (source.fill && whole && !is_solid(tag))
      classify_inside(weights_, PolygonObjectContainer(walk, box));
    voxelize(weights_, walk, box, profile);
    if (texture) scale_by_texture(weights_, *texture);  // the inside too
  }
  profile.volume_texture = texture.get();
  if (source.normal_force != 0)
    voxelize_velocity(sim.velocity_sources(), walk, box, profile, source.normal_force);
}

}  // namespace nbx
