#include "render/shading.h"

#include <algorithm>

#include "math/lanes/spline_kernels.h"
#include "render/march/grid_lookup.h"
#include "util/units.h"

namespace nbx {

namespace {

// Moves points along the curl of the shader's noise. The noise follows the gas if the frame has
// advected coordinates. Otherwise it stays in place in the domain, even while the container moves,
// and fades where the flow doesn't turn.
void displace_by_noise(Points& q, const RenderVolume& volume, const DetailNoise& noise) {
  const AdvectedCoords& coords = volume.advectedCoords;
  Points c = q;
  alignas(64) float age[kBlock]{}, mask[kBlock];
  std::fill_n(mask, kBlock, 1.0f);
  if (coords.all()) {
    sample_clamped(c.x, *coords.x, q);
    sample_clamped(c.y, *coords.y, q);
    sample_clamped(c.z, *coords.z, q);
    if (coords.age) sample_clamped(age, *coords.age, q);
  } else {
    const Vec3f offset = vector_cast<float>(volume.gridOffset);
    for (int i = 0; i < kBlock; ++i) {
      c.x[i] += offset[0];
      c.y[i] += offset[1];
      c.z[i] += offset[2];
    }
  }
  if (volume.vorticityMask) sample_clamped(mask, *volume.vorticityMask, q);
  Colors d;
  noise.curl(d, c);
  for (int i = 0; i < q.n; ++i) {
    if (age[i] >= 2) continue;
    q.x[i] += d.c[0][i] * mask[i];
    q.y[i] += d.c[1][i] * mask[i];
    q.z[i] += d.c[2][i] * mask[i];
  }
}

void evaluate_curve(float* out, const RationalSpline& curve, const float* v, int n) {
  spline_kernels().evaluate(out, v, n, curve.table());
}

// c and b of one shader.
struct ShaderValues {
  alignas(64) float color[kBlock], density[kBlock];
};

void look_up(ShaderValues& out, const VolumeShader& shader, const Points& points, bool linear,
             bool colors) {
  const auto values = [&](float* result, const ChannelSampler& sampler,
                          const RationalSpline& curve) {
    alignas(64) float v[kBlock];
    linear ? sampler.sample_linear(v, points) : sampler.sample(v, points);
    evaluate_curve(result, curve, v, points.n);
  };
  values(out.density, shader.extinction_sampler(), shader.extinction_curve());
  if (!colors) return;
  if (shader.density_sampler)
    values(out.color, shader.color_sampler, shader.color_curve);
  else
    std::copy_n(out.density, points.n, out.color);
}

bool moves_points(const VolumeShader& shader, const RenderVolume& volume) {
  return (shader.displace != 0 && volume.has_velocity()) || shader.noise.on();
}

void look_up(ShaderValues& out, const RenderVolume& volume, const VolumeShader& shader,
             const Points& points, bool linear, const ShaderLookup& how) {
  if (!how.displaced || !moves_points(shader, volume))
    return look_up(out, shader, points, linear, how.colors);
  Points moved;
  displace(moved, volume, shader, points);
  look_up(out, shader, moved, linear, how.colors);
}

// Fills in a channel of the kernel that needs nothing but extinction. False if the shader needs
// more than that kernel does.
bool bind_channel(GasChannels::Channel& channel, const VolumeShader& shader,
                  const RenderVolume& volume) {
  if (!shader.on) return true;
  const FieldHandle& field = shader.extinction_sampler().field;
  if (!field || moves_points(shader, volume)) return false;
  channel = {kernel_field(*field), shader.extinction_curve().table(),
             static_cast<float>(shader.density_scale)};
  return true;
}

void clear(Colors& colors) {
  for (auto& channel : colors.c) std::fill_n(channel, kBlock, 0.0f);
}

// Multiplies colors by the light at their points. Black points stay black, so they don't query the
// light, which may be expensive.
void light_up(Colors& color, LightField& field, const RayRecord& ray, const Points& points) {
  Points lit;
  int from[kBlock];
  for (int i = 0; i < points.n; ++i) {
    if (!(std::max({color.c[0][i], color.c[1][i], color.c[2][i]}) > 0)) continue;
    from[lit.n] = i;
    lit.x[lit.n] = points.x[i];
    lit.y[lit.n] = points.y[i];
    lit.z[lit.n] = points.z[i];
    lit.t[lit.n++] = points.t[i];
  }
  if (lit.n == 0) return;
  Colors light;
  field.query(light, *ray.lighting, ray, lit);
  for (int c = 0; c < 3; ++c)
    for (int i = 0; i < lit.n; ++i) color.c[c][from[i]] *= light.c[c][i];
}

}  // namespace

void displace(Points& out, const RenderVolume& volume, const VolumeShader& shader,
              const Points& points) {
  out = points;
  if (shader.displace != 0 && volume.has_velocity()) {
    Colors u;
    sample_velocity(u, march_kernels().linear, *volume.velU, *volume.velV, *volume.velW, points);
    const float k = shader.displace;
    for (int i = 0; i < points.n; ++i) {
      out.x[i] -= u.c[0][i] * k;
      out.y[i] -= u.c[1][i] * k;
      out.z[i] -= u.c[2][i] * k;
    }
  }
  if (shader.noise.on()) displace_by_noise(out, volume, shader.noise);
}

void fire_and_smoke(FireAndSmoke& out, const RenderVolume& volume, const Points& points,
                    const ShaderLookup& how) {
  const int n = points.n;
  ShaderValues values;
  if (volume.fire.on) {
    look_up(values, volume, volume.fire, points, how.linear_fire, how);
    if (how.colors) volume.fire.ramp->lookup(out.fire_color, values.color, n);
    const float scale = volume.fire.density_scale, mask_scale = volume.fireMaskScale;
    for (int i = 0; i < n; ++i) {
      const float b = values.density[i];
      out.fire_extinction[i] = scale * b;
      out.mask[i] = std::min(std::max(1 - b * mask_scale, 0.0f), 1.0f);
    }
  } else {
    if (how.colors) clear(out.fire_color);
    std::fill_n(out.fire_extinction, kBlock, 0.0f);
    std::fill_n(out.mask, kBlock, 1.0f);
  }

  if (volume.smoke.on) {
    look_up(values, volume, volume.smoke, points, how.linear_smoke, how);
    float* d = values.density;  // b, until the mask is applied
    if (volume.fire.on)
      for (int i = 0; i < n; ++i) d[i] *= out.mask[i];
    const float scale = volume.smoke.density_scale, color_scale = volume.smokeColorScale;
    for (int i = 0; i < n; ++i) out.smoke_extinction[i] = scale * d[i];
    if (how.colors) {
      volume.smoke.ramp->lookup(out.smoke_color, values.color, n);
      for (int i = 0; i < n; ++i) {
        const float gain = color_scale * d[i];
        for (auto& channel : out.smoke_color.c) channel[i] *= gain;
      }
    }
  } else {
    if (how.colors) clear(out.smoke_color);
    std::fill_n(out.smoke_extinction, kBlock, 0.0f);
  }
}

void shade(Shaded& out, const RenderVolume& volume, const RayRecord& ray, const Points& points) {
  FireAndSmoke gas;
  fire_and_smoke(gas, volume, points, {});
  if (volume.light_field && ray.lighting)
    light_up(gas.smoke_color, *volume.light_field, ray, points);
  for (int c = 0; c < 3; ++c)
    for (int i = 0; i < points.n; ++i)
      out.emission.c[c][i] = gas.fire_color.c[c][i] + gas.smoke_color.c[c][i];
  for (int i = 0; i < points.n; ++i)
    out.extinction[i] = gas.fire_extinction[i] + gas.smoke_extinction[i];

  if (!volume.depth_fade) return;
  alignas(64) float depth[kBlock], fade[kBlock];
  for (int i = 0; i < points.n; ++i) depth[i] = points.t[i] * float(kMetersPerUnit);
  evaluate_curve(fade, *volume.depth_fade, depth, points.n);
  for (int i = 0; i < points.n; ++i) {
    for (auto& channel : out.emission.c) channel[i] *= fade[i];
    out.extinction[i] *= fade[i];
  }
}

bool bind_gas(GasChannels& gas, const RenderVolume& volume) {
  gas.mask_scale = volume.fireMaskScale;
  return bind_channel(gas.fire, volume.fire, volume) &&
         bind_channel(gas.smoke, volume.smoke, volume);
}

void shade_extinction(float* extinction, const RenderVolume& volume, const Points& points) {
  if (GasChannels channels; bind_gas(channels, volume))
    return march_kernels().extinction(extinction, channels, points.x, points.y, points.z, points.n);
  FireAndSmoke gas;
  fire_and_smoke(gas, volume, points, {.linear_fire = true, .linear_smoke = true, .colors = false});
  for (int i = 0; i < points.n; ++i)
    extinction[i] = gas.fire_extinction[i] + gas.smoke_extinction[i];
}

}  // namespace nbx
