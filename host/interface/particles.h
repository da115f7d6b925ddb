// Particles, as the host hands them out and as plug-ins move them.
#pragma once

#include <cstdint>
#include <vector>

#include "host/interface/vector.h"

namespace host {

/// Types of objects with particles (BaseObject::GetParticles). An emitter makes them. A system
/// holds the particles of all emitters under it. A group shows those of the system that its
/// parameter kGroupSystem links to; one with children shows none.
inline constexpr std::int32_t kParticleEmitter = 5109;
inline constexpr std::int32_t kParticleGroup = 1001414;
inline constexpr std::int32_t kParticleSystem = 1001428;
/// Link parameter of a group.
inline constexpr std::int32_t kGroupSystem = 1001428;

enum ParticleBits : std::uint32_t {
  kParticleVisible = 1,
  kParticleAlive = 2,  ///< with kParticleVisible: the particle counts
};

/// One particle at the document's time, in the world's space.
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
  std::int32_t number = 0;  ///< of its birth in its emitter, from 0 on: stays with the particle
};
using Particles = std::vector<Particle>;

/// What modifiers want of one particle in one step: where any of them has a say, the mean of their
/// velocities takes the place of the particle's own.
struct ParticleModification {
  Vector velocity;         ///< sum over the modifiers, units per second
  std::int32_t count = 0;  ///< of modifiers that added to it
};

}  // namespace host
