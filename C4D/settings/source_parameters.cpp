#include "C4D/settings/source_parameters.h"

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_tag_parameters.h"
#include "C4D/services/host_conversion.h"
#include "simulation/channel_key.h"

namespace nbx {

namespace {

constexpr double kSmallestThickness = 1.7320508075688772;  // the diagonal of a cell

ParticleMap particle_map(TagParticleMap value) {
  switch (value) {
    case TVOLUME_PARTICLE_AGE:
      return ParticleMap::kAge;
    case TVOLUME_PARTICLE_SIZE:
      return ParticleMap::kSize;
    case TVOLUME_PARTICLE_MASS:
      return ParticleMap::kMass;
    case TVOLUME_PARTICLE_SPEED:
      return ParticleMap::kSpeed;
    default:
      return ParticleMap::kNone;
  }
}

void read_amounts(SimulationObjectParameters& source, const ParameterReader& p, double frames) {
  const auto channel = [&](int key, const Parameter<double>& amount,
                           const Parameter<TagMode>& mode) {
    source.amounts[key] = p(amount);
    if (p(mode) != TVOLUME_MODE_ADD) return;
    source.add_keys.insert(key);
    source.amounts[key] *= frames;
  };
  channel(kDensity, TVOLUME.DENSITY, TVOLUME.DENSITY_MODE);
  channel(kTemperature, TVOLUME.TEMPERATURE, TVOLUME.TEMPERATURE_MODE);
  channel(kFuel, TVOLUME.FUEL, TVOLUME.FUEL_MODE);
  channel(kBurn, TVOLUME.BURN, TVOLUME.BURN_MODE);
  source.amounts[kExpansion] = p(TVOLUME.EXPANSION);  // a rate: the same in every substep
}

}  // namespace

SimulationObjectParameters source_parameters(const host::BaseTag& tag, const SolverParams& params,
                                             double frames) {
  const ParameterReader p(tag);
  SimulationObjectParameters source;
  read_amounts(source, p, frames);

  source.transform = to_affine(tag.GetObject()->GetMg());
  source.transform.rows[2] = -source.transform.rows[2];
  source.transform.translation[2] *= -1;
  source.direction = to_vector(p(TVOLUME.DIRECTION)) * params.unit_scale;
  source.normal_force = p(TVOLUME.NORMAL_FORCE) * params.unit_scale * frames;
  source.velocity_transfer = p(TVOLUME.VELOCITY_TRANSFER) * params.unit_scale;

  source.thickness = std::max(p(TVOLUME.THICKNESS) / params.voxel_size, kSmallestThickness);
  source.fill = p(TVOLUME.FILL);
  source.particle_map = particle_map(p(TVOLUME.PARTICLE_MAP));
  source.particle_curve = to_spline(p(TVOLUME.PARTICLE_CURVE));

  source.time_scale = params.time_scale;
  return source;
}

int surface_channel(const host::BaseTag& tag) {
  switch (ParameterReader(tag)(TVOLUME.SURFACE_CHANNEL)) {
    case TVOLUME_SURFACE_CHANNEL_0:
      return 0;
    case TVOLUME_SURFACE_CHANNEL_1:
      return 1;
    case TVOLUME_SURFACE_CHANNEL_2:
      return 2;
    case TVOLUME_SURFACE_CHANNEL_7:
      return 7;
    default:
      return -1;
  }
}

}  // namespace nbx
