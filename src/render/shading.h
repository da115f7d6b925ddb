// The shaders: from grids to emission and extinction at points of a volume.
//
//     fire    E  = ramp(c)              s  = density_scale b,   mask = clamp(1 - b fireMaskScale)
//     smoke   E += ramp(c) light smokeColorScale mask b        s += density_scale mask b
//
// c and b as for VolumeShader. Extinction is the same in all three channels.
#pragma once

#include "render/render_volume.h"

namespace nbx {

struct Shaded {
  Colors emission;
  alignas(64) float extinction[kBlock];
};

/// c and b of one shader.
struct ShaderValues {
  alignas(64) float color[kBlock], density[kBlock];
};

/// All of it, with light and depth fade.
void shade(Shaded& out, const RenderVolume& volume, const RayRecord& ray, const Points& points);

/// The extinction alone, for shadows: linear filter, no depth fade.
void density(float* extinction, const RenderVolume& volume, const Points& points);

/// c and b at the points as they are, without displacement. The shader must be on.
void evaluate_shader(ShaderValues& out, const VolumeShader& shader, const Points& points);

/// The points where a shader looks its channels up.
void displace(Points& out, const RenderVolume& volume, const VolumeShader& shader,
              const Points& points);

/// out = curve(v) for n values; a curve without knots is 0.
void evaluate_curve(float* out, const RationalSpline& curve, const float* v, int n);

}  // namespace nbx
