// One ray through the volumes of a render: what the caller asks and what the marcher answers.
#pragma once

#include <cstdint>
#include <limits>

#include "math/vector.h"
#include "render/shade/field3.h"

namespace nbx {

class Lighting;

/// Classes of rays, as bits of RayRecord::mask and of the masks by which a volume hides from them.
enum RayClass : std::uint32_t {
  kCameraRay = 1,
  kShadowRay = 2,
  kTransparencyRay = 4,
  kReflectionRay = 8,
  kRefractionRay = 16,
  kIndirectRay = 32,
  kOcclusionRay = 64,
  /// Cast while a volume asks for its light: volumes answer by `innerExcludeMask`.
  kLightQueryRay = 128,
};

/// Lives on the stack of the call that casts the ray. World space is the one that
/// RenderVolume::worldToVoxel starts from.
struct RayRecord {
  int thread = 0;                // of the render, from 0
  Lighting* lighting = nullptr;  // as this thread sees the lights; null: light fields aren't asked
  Vec3d origin, direction;       // direction of unit length
  double tMin = 0, tMax = std::numeric_limits<double>::infinity();  // the part that counts
  std::uint32_t mask = 0;
  std::uint64_t seed = 0;  // differs from ray to ray, and not with the number of threads

  Color radiance{0, 0, 0};       // light added, dimmed on its way to the origin
  Color transmittance{1, 1, 1};  // share that passes from end to end
};

}  // namespace nbx
