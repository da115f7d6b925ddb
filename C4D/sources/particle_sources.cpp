#include "C4D/sources/particle_sources.h"

#include "scene/cell_center_voxelizer.h"
#include "scene/particle_voxelizer.h"

namespace nbx {

namespace {

bool is_source(host::BaseObject& object) {
  return object.GetType() == host::kParticleEmitter ||
         (object.GetType() == host::kParticleGroup && !object.GetDown());
}

ParticleColumns needed(const SimulationObjectParameters& parameters) {
  ParticleColumns columns;
  columns.velocity = parameters.particle_map == ParticleMap::kSpeed;
  columns.age = parameters.particle_map == ParticleMap::kAge;
  columns.mass = parameters.particle_map == ParticleMap::kMass;
  columns.size = parameters.particle_map == ParticleMap::kSize;
  return columns;
}

void emit(SparseField<float, 3>& weights, const host::BaseObject& object,
          const SimulationObjectParameters& parameters, const IntBox& box) {
  const ParticleTable table = make_table(object, needed(parameters));
  const ParticleSpheres spheres(table, parameters, box);
  weights.hash_resize(weights.blocks().size() + spheres.block_bound());
  voxelize_particles(CellCenterVoxelizer(weights, box, {parameters.thickness}), spheres);
}

void push(const FaceFields& velocity, const host::BaseObject& object,
          const SimulationObjectParameters& parameters, const IntBox& box, double strength) {
  ParticleColumns columns = needed(parameters);
  columns.velocity = true;
  const ParticleTable table = make_table(object, columns);
  const ParticleSpheres spheres(table, parameters, box);
  const std::size_t blocks = spheres.block_bound();
  for (SparseField<float, 3>* field : velocity) field->hash_resize(field->blocks().size() + blocks);
  voxelize_particles(VelocityVoxelizer(velocity, box, {parameters.thickness}, strength), spheres);
}

}  // namespace

ParticleTable make_table(const host::BaseObject& object, const ParticleColumns& columns) {
  const host::Particles& particles = object.GetParticles();
  ParticleTable table;
  const auto add = [&](const char* name, auto value) {
    ParticleTable::Column column;
    column.reserve(particles.size());
    for (const host::Particle& p : particles) column.push_back(static_cast<float>(value(p)));
    table.add(name, std::move(column));
  };
  using P = const host::Particle&;
  constexpr std::uint32_t counts = host::kParticleVisible | host::kParticleAlive;
  if (columns.active) add("active", [](P p) { return (p.bits & counts) == counts; });
  if (columns.position) {
    add("position.x", [](P p) { return p.position.x; });
    add("position.y", [](P p) { return p.position.y; });
    add("position.z", [](P p) { return p.position.z; });
  }
  if (columns.velocity) {
    add("velocity.x", [](P p) { return p.velocity.x; });
    add("velocity.y", [](P p) { return p.velocity.y; });
    add("velocity.z", [](P p) { return -p.velocity.z; });
  }
  if (columns.age) add("age", [](P p) { return p.age; });
  if (object.GetType() != host::kParticleGroup) return table;
  if (columns.mass) add("mass", [](P p) { return p.mass; });
  if (columns.size) add("size", [](P p) { return p.size; });
  return table;
}

std::vector<host::BaseObject*> gather_particle_objects(host::BaseObject& object) {
  std::vector<host::BaseObject*> found, stack{&object};
  while (!stack.empty()) {
    host::BaseObject* top = stack.back();
    stack.pop_back();
    if (!top->GetDeformMode()) continue;
    if (is_source(*top)) found.push_back(top);
    for (host::BaseObject* child = top->GetDown(); child; child = child->GetNext())
      stack.push_back(child);
  }
  return found;
}

void add_particle_sources(SparseField<float, 3>& weights, const FaceFields& velocity,
                          host::BaseObject& object, const SimulationObjectParameters& parameters,
                          const IntBox& box) {
  const double strength = parameters.velocity_transfer * parameters.time_scale;
  const bool emits = has_emission(parameters);
  for (const host::BaseObject* source : gather_particle_objects(object)) {
    if (emits) emit(weights, *source, parameters, box);
    if (strength > 0) push(velocity, *source, parameters, box, strength);
  }
}

}  // namespace nbx
