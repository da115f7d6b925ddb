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

/// The weights of the cells near the meshes of a tag, and all that they follow from: as long as
/// that stays the same, so do they. Nothing is kept of sources with textures or particles.
struct MeshWeights {
  struct Inputs {
    std::vector<DetachedPolygonObject> meshes;
    Affine3d world_to_grid;
    IntBox box;
    ThicknessProfile profile;
    bool inside = false;  // the cells inside count as well

    bool operator==(const Inputs&) const = default;
  };

  void clear() {
    from = {};
    weights.clear();
  }

  Inputs from;  // without meshes: not known
  SparseField<float, 3> weights;
};

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

void voxelize(SparseField<float, 3>& weights, const PolygonWalk& walk,
              const MeshWeights::Inputs& from) {
  if (from.inside) classify_inside(weights, PolygonObjectContainer(walk, from.box));
  voxelize(weights, walk, from.box, from.profile);
}

}  // namespace

EmitterSampler::EmitterSampler(host::BaseObject& volume)
    : volume_(volume), tags_(find_source_tags(volume.GetDocument())) {}

EmitterSampler::~EmitterSampler() = default;

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
    sources.world_to_grid = run_grid(volume_, run.params).world_to_grid;
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
  std::unique_ptr<MeshWeights>& known = weights_[&tag];
  if (!known) known = std::make_unique<MeshWeights>();
  MeshWeights& held = *known;
  add_meshes(run, sources, tag, source, held);
  if (!gather_particle_objects(*object).empty()) {
    held.from = {};
    add_particle_sources(held.weights, sources.velocity_sources(), *object, source,
                         run.domain.domain_box);
  }
  if (source.fill) held.weights.clear_blocks_le(0);
  sources.add_source_object(source, held.weights);
}

void EmitterSampler::add_meshes(const RunView& run, StepSources& sources, const host::BaseTag& tag,
                                const SimulationObjectParameters& source, MeshWeights& held) {
  const bool emits = has_emission(source), pushes = source.normal_force != 0;
  const int channel = surface_channel(tag);
  MeshWeights::Inputs from;
  if (emits || pushes) from.meshes = detach(source_meshes(tag), channel);
  if (from.meshes.empty()) return held.clear();

  const bool whole = ParameterReader(tag)(TVOLUME.SELECTIONS).empty();
  const auto texture = volume_texture(tag, source.time, run.params.voxel_size);
  from.world_to_grid = source.world_to_grid;
  from.box = run.domain.domain_box;
  from.profile = {source.thickness, channel >= 0, ParameterReader(tag)(TVOLUME.CORNER_WEIGHTS)};
  from.inside = source.fill && whole && !is_solid(tag);
  const bool fixed = emits && !texture && channel < 0;
  if (fixed && held.from == from && !pushes) return;

  const PolygonWalk walk(from.meshes, from.world_to_grid);
  if (!(fixed && held.from == from)) {
    held.clear();
    if (emits) voxelize(held.weights, walk, from);
    if (emits && texture) scale_by_texture(held.weights, *texture);  // the inside too
  }
  if (pushes) {
    from.profile.volume_texture = texture.get();
    voxelize_velocity(sources.velocity_sources(), walk, from.box, from.profile,
                      source.normal_force);
  }
  if (fixed) {
    from.profile.volume_texture = nullptr;
    held.from = std::move(from);
  }
}

}  // namespace nbx
