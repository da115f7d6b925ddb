#include "C4D/run/warnings/emitter_facts.h"

#include <cmath>

#include "C4D/run/warnings/channel_rows.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/source_parameters.h"
#include "C4D/settings/volume_grid.h"
#include "C4D/sources/particle_sources.h"
#include "C4D/sources/source_tags.h"

namespace nbx {

namespace {

bool has_polygons(const SourceMesh& source) {
  const std::int32_t polygons = source.mesh->GetPolygonCount();
  if (!source.selection) return polygons > 0;
  for (std::int32_t i = 0; i < polygons; ++i)
    if (source.selection->IsSelected(i)) return true;
  return false;
}

/// A box around the emitter at the document's time. That of a selection is the whole mesh's.
WorldBox mesh_box(const host::BaseTag& tag) {
  WorldBox box;
  for (const SourceMesh& source : source_meshes(tag)) {
    if (!has_polygons(source)) continue;
    const Vec3d center = to_vector(source.mesh->GetMp()), half = to_vector(source.mesh->GetRad());
    WorldBox own;
    own.add(center - half);
    own.add(center + half);
    box.add(transformed(to_affine(source.mesh->GetMg()), own));
  }
  return box;
}

/// Adds the living particles of the emitter, and returns the speed of the fastest.
double add_particles(WorldBox& box, host::BaseObject& object) {
  constexpr std::uint32_t counts = host::kParticleVisible | host::kParticleAlive;
  double fastest = 0;
  for (const host::BaseObject* source : gather_particle_objects(object))
    for (const host::Particle& p : source->GetParticles()) {
      if ((p.bits & counts) != counts) continue;
      box.add(to_vector(p.position));
      fastest = std::max(fastest, length(to_vector(p.velocity)));
    }
  return fastest;
}

bool reaches(const WorldBox& box, double thickness, const SourceDomain& domain) {
  const WorldBox cells = transformed(domain.world_to_grid, box);
  const double margin = std::max(thickness / domain.voxel_size, std::sqrt(3.0));
  for (int a = 0; a < 3; ++a)
    if (!(cells.lo[a] - margin <= domain.cells.hi[a] && cells.hi[a] + margin >= domain.cells.lo[a]))
      return false;
  return true;
}

double longest_edge(const WorldBox& box) {
  const Vec3d size = box.hi - box.lo;
  return std::max({size[0], size[1], size[2]});
}

}  // namespace

SourceDomain::SourceDomain(const host::BaseObject& volume)
    : voxel_size(ParameterReader(volume)(OVOLUME.VOXEL_SIZE)) {
  const VolumeGrid grid = volume_grid(volume, voxel_size);
  world_to_grid = grid.world_to_grid;
  cells.add(Vec3d(-0.5, -0.5, -0.5));
  cells.add(grid.cells - Vec3d(0.5, 0.5, 0.5));
}

EmitterFacts::EmitterFacts(host::BaseTag& emitter)
    : tag(&emitter),
      on(ParameterReader(emitter)(TVOLUME.ENABLED) && source_object(emitter)),
      solid(is_solid(emitter)) {
  for (const ChannelRow& row : channel_rows()) {
    amounts[row.key] = 0;
    if (emitter.IsAnimated(row.amount)) animated.insert(row.key);
  }
}

bool EmitterFacts::gives_gas() const {
  return std::ranges::any_of(channel_rows(),
                             [this](const ChannelRow& row) { return may_give(row.key); });
}

bool EmitterFacts::settled() const {
  if (!on || (works && extent >= 1)) return true;
  return solid && has_shape && !gives_gas();
}

void look_at(EmitterFacts& emitter, const SourceDomain& domain,
             const std::vector<SourceDomain>& others) {
  if (!emitter.on) return;
  const ParameterReader p(*emitter.tag);
  WorldBox now = mesh_box(*emitter.tag);
  if (!now.empty())
    emitter.extent = std::max(emitter.extent, longest_edge(transformed(domain.world_to_grid, now)));
  WorldBox particles;
  const double fastest = add_particles(particles, *emitter.tag->GetObject());
  if (!particles.empty()) emitter.extent = WorldBox::kFar;
  now.add(particles);

  bool gives = p(TVOLUME.EXPANSION) != 0;
  for (const ChannelRow& row : channel_rows()) {
    double& most = emitter.amounts.at(row.key);
    most = std::max(most, p(row.amount));
    gives |= p(row.amount) > 0;
  }
  const double speed = length(to_vector(p(TVOLUME.DIRECTION))) + std::abs(p(TVOLUME.NORMAL_FORCE)) +
                       std::max(p(TVOLUME.VELOCITY_TRANSFER), 0.0) * fastest;
  emitter.speed = std::max(emitter.speed, speed);
  gives |= speed > 0;

  const bool has_shape = !now.empty();
  emitter.box.add(now);
  WorldBox swept = emitter.last_box;
  swept.add(now);
  emitter.last_box = now;
  const double thickness = p(TVOLUME.THICKNESS);
  const bool is_inside = has_shape && reaches(swept, thickness, domain);
  emitter.has_shape |= has_shape;
  emitter.gives |= gives;
  emitter.reaches |= is_inside;
  emitter.works |= is_inside && gives;
  for (const SourceDomain& other : others)
    emitter.reaches_another |= has_shape && reaches(swept, thickness, other);
}

}  // namespace nbx
