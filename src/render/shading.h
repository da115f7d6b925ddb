// The shaders: from grids to emission and extinction at points of a volume.
//
//     fire    E  = ramp(c)                            s  = density_scale b
//     smoke   E += ramp(c) smokeColorScale d light    s += density_scale d
//
//     mask = clamp(1 - b fireMaskScale, 0, 1) of the fire,   d = mask b of the smoke
//
// See VolumeShader for c and b. Extinction is the same in all three channels.
#pragma once

#include "render/march/march_kernels.h"
#include "render/render_volume.h"

namespace nbx {

/// Fire and smoke at the points of a block, before light reaches the smoke.
struct FireAndSmoke {
  Colors fire_color, smoke_color;  // what the fire emits; the smoke under white light
  alignas(64) float fire_extinction[kBlock], smoke_extinction[kBlock];
  alignas(64) float mask[kBlock];  // share of the smoke that is left by the fire in its voxel
};

/// How the shaders look up their channels.
struct ShaderLookup {
  bool displaced = true;                           // at each shader's displaced points
  bool linear_fire = false, linear_smoke = false;  // trilinear, whatever the filter
  bool colors = true;                              // false: leaves both colors undefined
};

/// The formula above, which the view, shadows and scattering share. A shader that is off counts as
/// black without extinction.
void fire_and_smoke(FireAndSmoke& out, const RenderVolume& volume, const Points& points,
                    const ShaderLookup& how);

struct Shaded {
  Colors emission;
  alignas(64) float extinction[kBlock];
};

/// What a view ray sees, with light and depth fade.
void shade(Shaded& out, const RenderVolume& volume, const RayRecord& ray, const Points& points);

/// What shadow rays and matte volumes need: extinction alone, by the linear filter and without
/// depth fade.
void shade_extinction(float* extinction, const RenderVolume& volume, const Points& points);

/// Fills in what the kernels need for the same. False if they can't do it, because noise or the
/// flow displaces a shader.
bool bind_gas(GasChannels& gas, const RenderVolume& volume);

/// The points where a shader looks up its channels.
void displace(Points& out, const RenderVolume& volume, const VolumeShader& shader,
              const Points& points);

}  // namespace nbx
