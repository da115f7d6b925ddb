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

/// The cells of the domain that the meshes of a solid reach into.
IntBox solid_box(const host::BaseTag& tag, const Affine3d& world_to_grid, const IntBox& domain) {
  IntBox box;
  for (const SourceMesh& source : solid_meshes(tag)) {
    const Affine3d to_cells = world_to_grid * to_affine(source.mesh->GetMg());
    const Vec3d center = to_vector(source.mesh->GetMp()), radius = to_vector(source.mesh->GetRad());
    for (int corner = 0; corner < 8; ++corner) {
      Vec3d at = center;
      for (int a = 0; a < 3; ++a) at[a] += (corner >> a & 1 ? 1 : -1) * radius[a];
      at = to_cells(at);
      IntBox cells;
      for (int a = 0; a < 3; ++a) {
        // Points far outside must not leave the range of int.
        const double x = std::clamp(at[a], -1.0, domain.hi[a] + 1.0);
        cells.lo[a] = static_cast<int>(std::floor(x));
        cells.hi[a] = static_cast<int>(std::ceil(x));
      }
      box = box_union(box, cells);
    }
  }
  return box_intersection(box, domain);
}

}  // namespace

EmitterSampler::EmitterSampler(host::BaseObject& volume)
    : volume_(volume), tags_(find_source_tags(volume.GetDocument())) {}

void EmitterSampler::update_inputs(const RunView& run, StepSources& sources, double frame_start,
                                   double dt) {
  const StepClock& clock = run.clock;
  const double voxel_size = run.params.voxel_size;
  const double length = clock.sim_time.length.value();
  const double to_document = length > 0 ? clock.frame_duration / length : 0;
  const double start = frame_start + clock.frame_elapsed * to_document;
  const double duration = dt * to_document;

  const int n = source_substeps(volume_, tags_, voxel_size, start, start + duration);
  for (int i = 1; i <= n; ++i) {
    evaluate(volume_.GetDocument(), start + i * duration / n);
    sources.world_to_grid = volume_grid(volume_, voxel_size).world_to_grid;
    for (auto tag = tags_.rbegin(); tag != tags_.rend(); ++tag)
      sample(run, sources, **tag, duration / n / clock.frame_duration);
  }
  for (const host::BaseTag* tag : tags_)
    if (is_solid(*tag))
      sources.keep_box = box_union(sources.keep_box,
                                   solid_box(*tag, sources.world_to_grid, run.domain.domain_box));
}

/// Adds one source at the document's time, which lasts for `frames` frames.
void EmitterSampler::sample(const RunView& run, StepSources& sources, host::BaseTag& tag,
                            double frames) {
  host::BaseObject* object = source_object(tag);
  if (!object) return;
  SimulationObjectParameters source = source_parameters(tag, run.params, frames);
  source.world_to_grid = sources.world_to_grid;
  source.time = run.clock.now();
  weights_.clear();
  if (has_emission(source) || source.normal_force != 0) add_meshes(run, sources, tag, source);
  add_particle_sources(weights_, sources.velocity_sources(), *object, source,
                       run.domain.domain_box);
  if (source.fill) weights_.clear_blocks_le(0);
  sources.add_source_object(source, weights_);
}

void EmitterSampler::add_meshes(const RunView& run, StepSources& sources, const host::BaseTag& tag,
                                const SimulationObjectParameters& source) {
  const IntBox& box = run.domain.domain_box;
  const int channel = surface_channel(tag);
  const std::vector<DetachedPolygonObject> meshes = detach(source_meshes(tag), channel);
  if (meshes.empty()) return;
  const PolygonWalk walk(meshes, source.world_to_grid);
  const auto texture = volume_texture(tag, source.time, run.params.voxel_size);
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
    voxelize_velocity(sources.velocity_sources(), walk, box, profile, source.normal_force);
}

}  // namespace nbx
