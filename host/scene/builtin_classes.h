// Parameters of the built-in classes that no plug-in reads. Those that plug-ins read are in
// host/interface. The tables are in builtin_objects.cpp, builtin_particles.cpp and
// builtin_surfaces.cpp.
#pragma once

#include "host/scene/element_class.h"

namespace host {

enum MeshParameter : std::int32_t {
  kMeshFile = 1000,
  kMeshFileScale = 1001,
  kMeshFileNode = 1002,
};

/// Each primitive has some of these.
enum PrimitiveParameter : std::int32_t {
  kPrimitiveRadius = 1000,
  kPrimitiveTubeRadius = 1001,
  kPrimitiveHeight = 1002,
  kPrimitiveSize = 1003,
  kPrimitiveSegments = 1004,
  kPrimitiveRings = 1005,
  kPrimitiveCaps = 1006,
};

enum EmitterParameter : std::int32_t {
  kEmitterRate = 1000,
  kEmitterLife = 1001,
  kEmitterLifeVariation = 1002,
  kEmitterSpeed = 1003,
  kEmitterSpeedVariation = 1004,
  kEmitterSpread = 1005,
  kEmitterSize = 1006,
  kEmitterGravity = 1007,
  kEmitterSeed = 1008,
  kEmitterStart = 1009,
  kEmitterEnd = 1010,
  kEmitterMass = 1011,
  kEmitterParticleSize = 1012,
  kEmitterVariation = 1013,
  kEmitterSpin = 1014,
};

enum ShaderParameter : std::int32_t {
  kShaderFile = 1000,
  kShaderLinear = 1001,
  kShaderColorA = 1002,
  kShaderColorB = 1003,
  kShaderScale = 1004,
  kShaderOffset = 1005,
  kShaderOctaves = 1006,
  kShaderSpeed = 1007,
  kShaderSeed = 1008,
  kShaderContrast = 1009,
  kShaderDirection = 1010,
};

void AddBuiltinObjects(ElementClasses& objects);
void AddParticleObjects(ElementClasses& objects);
void AddBuiltinTags(ElementClasses& tags);
void AddMaterial(ElementClasses& materials);
void AddBuiltinShaders(ElementClasses& shaders);

}  // namespace host
