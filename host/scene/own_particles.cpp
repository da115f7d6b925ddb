#include "host/scene/own_classes.h"
#include "host/scene/parameter_lines.h"

namespace host {

using namespace line;

void AddParticleObjects(ElementClasses& objects) {
  const auto share = [](std::int32_t id, const char* symbol, const char* help) {
    return Still(Real(id, symbol, 0, 0, 1, "", help));
  };
  Add(objects, kParticleEmitter, "Emitter", "particle_emitter",
      "A rectangle in its own x and y that sends particles along z",
      {Real(kEmitterRate, "EMITTER_RATE", 25, 0, 1e9, "particles per second",
            "How many are born; an emitter holds at most 10000000 at once"),
       Real(kEmitterLife, "EMITTER_LIFE", 2, 0, 1e6, "s", "From birth to death"),
       share(kEmitterLifeVariation, "EMITTER_LIFE_VARIATION",
             "Lives differ by up to this share of the life, either way"),
       Real(kEmitterSpeed, "EMITTER_SPEED", 100, -1e9, 1e9, "units per second", "At birth"),
       share(kEmitterSpeedVariation, "EMITTER_SPEED_VARIATION",
             "Speeds differ by up to this share of the speed, either way"),
       Real(kEmitterSpread, "EMITTER_SPREAD", 0, 0, 180, "degrees",
            "Largest angle between a particle's course and z"),
       Edges(kEmitterSize, "EMITTER_SIZE", {},
             "Edges of the box around the origin in which particles are born"),
       Any(kEmitterGravity, "EMITTER_GRAVITY", Vector{}, "units per second squared",
           "Acceleration, in the world's axes"),
       Still(Whole(kEmitterSeed, "EMITTER_SEED", 0, 0, 2147483647,
                   "Another number gives other particles")),
       Still(Any(kEmitterStart, "EMITTER_START", BaseTime(), "s", "When the first is born")),
       Still(Any(kEmitterEnd, "EMITTER_END", BaseTime(1000000, 1), "s", "When births end")),
       Real(kEmitterMass, "EMITTER_MASS", 1, 0, 1e9, "", "Of a particle"),
       Real(kEmitterParticleSize, "EMITTER_PARTICLE_SIZE", 1, 0, 1e9, "units",
            "Radius of a particle"),
       share(kEmitterVariation, "EMITTER_VARIATION",
             "Masses and sizes differ by up to this share, either way"),
       Real(kEmitterSpin, "EMITTER_SPIN", 0, -1e9, 1e9, "degrees per second",
            "Rotation of a particle about an axis of its own")});
  Add(objects, kParticleSystem, "Particle System", "particle_system",
      "Holds the particles of all emitters under it", {});
  Add(objects, kParticleGroup, "Particle Group", "particle_group",
      "Shows the particles of a particle system, for a tag",
      {Link(kGroupSystem, "GROUP_SYSTEM", LinkTarget::Object, "The particle system")});
}

}  // namespace host
