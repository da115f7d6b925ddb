// One ray through the volumes of a render: the query of the caller and the result of the marcher.
#pragma once

#include <cstdint>
#include <limits>

#include "math/vector.h"
#include "render/shade/field3.h"

namespace nbx {

class Lighting;

/// Classes of rays, as bits of RayRecord::mask and of the masks that hide a volume from rays.
enum RayClass : std::uint32_t {
  kCameraRay = 1,
  kShadowRay = 2,
  kTransparencyRay = 4,
  kReflectionRay = 8,
  kRefractionRay = 16,
  kIndirectRay = 32,
  kOcclusionRay = 64,
  /// Cast to compute the light in a volume: `innerExcludeMask` applies.
  kLightQueryRay = 128,
};

/// Lives on the stack of the caller. World space is the source of RenderVolume::worldToVoxel.
struct RayRecord {
  int thread = 0;                // of the render, from 0
  Lighting* lighting = nullptr;  // the lights, for this thread; null: light fields are ignored
  Vec3d origin, direction;       // direction of unit length
  double tMin = 0, tMax = std::numeric_limits<double>::infinity();  // the part to trace
  std::uint32_t mask = 0;
  std::uint64_t seed = 0;  // differs between rays, but not with the number of threads

  Color radiance{0, 0, 0};       // light that arrives at the origin
  Color transmittance{1, 1, 1};  // share of light that passes from end to end
};

}  // namespace nbx
