// Particles, and how plug-ins move them.
#pragma once

#include <cstdint>
#include <vector>

#include "host/interface/vector.h"

namespace host {

/// Types of objects with particles (BaseObject::GetParticles). An emitter creates them. A system
/// contains the particles of all emitters under it. A group shows the particles of the system
/// linked in kGroupSystem. A group with children shows none.
inline constexpr std::int32_t kParticleEmitter = 5109;
inline constexpr std::int32_t kParticleGroup = 1001414;
inline constexpr std::int32_t kParticleSystem = 1001428;
/// Link parameter of a group.
inline constexpr std::int32_t kGroupSystem = 1001428;

enum ParticleBits : std::uint32_t {
  kParticleVisible = 1,
  kParticleAlive = 2,  ///< a particle counts if it is alive and visible
};

/// One particle at the document's time, in world space.
struct Particle {
  Vector position;
  Vector velocity;  ///< units per second
  double age = 0;   ///< seconds since birth
  double life = 0;  ///< seconds from birth to death
  double mass = 1;
  double size = 1;          ///< radius, units
  Vector spin{0, 0, 1};     ///< axis of rotation, of length 1
  double spin_speed = 0;    ///< radians per second about it
  std::uint32_t bits = 0;   ///< of ParticleBits
  std::int32_t number = 0;  ///< order of birth in its emitter, from 0; never changes
};
using Particles = std::vector<Particle>;

/// The effect of modifiers on one particle in one step. If any modifier affects it, the mean of
/// their velocities replaces the particle's velocity.
struct ParticleModification {
  Vector velocity;         ///< sum over the modifiers, units per second
  std::int32_t count = 0;  ///< of modifiers that added to it
};

}  // namespace host
