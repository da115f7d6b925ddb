#include "host/scene/builtin_classes.h"
#include "host/scene/parameter_lines.h"

namespace host {

using namespace line;

void AddParticleObjects(ElementClasses& objects) {
  const auto share = [](std::int32_t id, const char* symbol, const char* help) {
    return Still(Real(id, symbol, 0, 0, 1, "", help));
  };
  Add(objects, kParticleEmitter, "Emitter", "particle_emitter",
      "Emits particles along z from a rectangle in x and y",
      {Real(kEmitterRate, "EMITTER_RATE", 25, 0, 1e9, "particles per second",
            "Number of births; an emitter has at most 10000000 particles at once"),
       Real(kEmitterLife, "EMITTER_LIFE", 2, 0, 1e6, "s", "Time from birth to death"),
       share(kEmitterLifeVariation, "EMITTER_LIFE_VARIATION",
             "Random variation of the life, as a fraction of it"),
       Real(kEmitterSpeed, "EMITTER_SPEED", 100, -1e9, 1e9, "units per second", "Speed at birth"),
       share(kEmitterSpeedVariation, "EMITTER_SPEED_VARIATION",
             "Random variation of the speed, as a fraction of it"),
       Real(kEmitterSpread, "EMITTER_SPREAD", 0, 0, 180, "degrees",
            "Largest angle between a particle's direction and z"),
       Edges(kEmitterSize, "EMITTER_SIZE", {},
             "Edge lengths of the box around the origin where particles are born"),
       Any(kEmitterGravity, "EMITTER_GRAVITY", Vector{}, "units per second squared",
           "Acceleration along the axes of the world"),
       Still(Whole(kEmitterSeed, "EMITTER_SEED", 0, 0, 2147483647, "Seed of the random numbers")),
       Still(Any(kEmitterStart, "EMITTER_START", BaseTime(), "s", "Time of the first birth")),
       Still(Any(kEmitterEnd, "EMITTER_END", BaseTime(1000000, 1), "s", "Time of the last birth")),
       Real(kEmitterMass, "EMITTER_MASS", 1, 0, 1e9, "", "Mass of a particle"),
       Real(kEmitterParticleSize, "EMITTER_PARTICLE_SIZE", 1, 0, 1e9, "units",
            "Radius of a particle"),
       share(kEmitterVariation, "EMITTER_VARIATION",
             "Random variation of mass and size, as a fraction of them"),
       Real(kEmitterSpin, "EMITTER_SPIN", 0, -1e9, 1e9, "degrees per second",
            "Rotation speed of a particle about its own axis")});
  Add(objects, kParticleSystem, "Particle System", "particle_system",
      "Contains the particles of all emitters under it", {});
  Add(objects, kParticleGroup, "Particle Group", "particle_group",
      "Shows the particles of a particle system, so that a tag can use them",
      {Link(kGroupSystem, "GROUP_SYSTEM", LinkTarget::Object, "The particle system")});
}

}  // namespace host
