#include "render/shading.h"

#include <algorithm>
#include <cmath>

#include "math/lanes/spline_kernels.h"
#include "render/light/grid_lookup.h"
#include "util/units.h"

namespace nbx {

namespace {

// Moves points along the curl of the shader's noise. Noise stays with the gas where coordinates
// traveled with it, else in the domain while the container moves, and fades where the flow
// doesn't turn.
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

bool displaces(const RenderVolume& volume, const VolumeShader& shader) {
  return (shader.displace != 0 && volume.has_velocity()) || shader.noise.on();
}

// Calls body(q) with the shader's own points.
template <class Body>
void at_shader_points(const RenderVolume& volume, const VolumeShader& shader, const Points& points,
                      Body body) {
  if (!displaces(volume, shader)) return body(points);
  Points q;
  displace(q, volume, shader, points);
  body(q);
}

// b for shadows.
void plain_density(float* b, const RenderVolume& volume, const VolumeShader& shader,
                   const Points& points) {
  at_shader_points(volume, shader, points, [&](const Points& q) {
    alignas(64) float v[kBlock];
    shader.extinction_sampler().sample_linear(v, q);
    evaluate_curve(b, shader.extinction_curve(), v, q.n);
  });
}

// Multiplies the color of points that have any by their light. The others aren't asked: light may
// be costly there, and nobody sees it.
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
  for (auto c = 0; c < 3; ++c)
    for (int i = 0; i < lit.n; ++i) color.c[c][from[i]] *= light.c[c][i];
}

// The share of the smoke that fire of density b leaves.
float mask_of(float b, float scale) { return std::min(std::max(1 - b * scale, 0.0f), 1.0f); }

}  // namespace

void evaluate_curve(float* out, const RationalSpline& curve, const float* v, int n) {
  spline_kernels().evaluate(out, v, n, curve.table());
}

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

void evaluate_shader(ShaderValues& out, const VolumeShader& shader, const Points& points) {
  alignas(64) float v[kBlock];
  shader.color_sampler.sample(v, points);
  evaluate_curve(out.color, shader.color_curve, v, points.n);
  if (!shader.density_sampler) return std::copy_n(out.color, points.n, out.density), void();
  shader.density_sampler.sample(v, points);
  evaluate_curve(out.density, shader.density_curve, v, points.n);
}

void shade(Shaded& out, const RenderVolume& volume, const RayRecord& ray, const Points& points) {
  const int n = points.n;
  ShaderValues values;
  alignas(64) float mask[kBlock];
  std::fill_n(mask, kBlock, 1.0f);
  if (volume.fire.on) {
    at_shader_points(volume, volume.fire, points,
                     [&](const Points& q) { evaluate_shader(values, volume.fire, q); });
    volume.fire.ramp->lookup(out.emission, values.color, n);
    const float scale = volume.fire.density_scale;
    const float mask_scale = volume.fireMaskScale;
    for (int i = 0; i < n; ++i) {
      out.extinction[i] = scale * values.density[i];
      mask[i] = mask_of(values.density[i], mask_scale);
    }
  } else {
    for (auto& channel : out.emission.c) std::fill_n(channel, kBlock, 0.0f);
    std::fill_n(out.extinction, kBlock, 0.0f);
  }

  if (volume.smoke.on) {
    at_shader_points(volume, volume.smoke, points,
                     [&](const Points& q) { evaluate_shader(values, volume.smoke, q); });
    const float scale = volume.smoke.density_scale;
    const float color_scale = volume.smokeColorScale;
    Colors albedo;
    volume.smoke.ramp->lookup(albedo, values.color, n);
    for (int i = 0; i < n; ++i) {
      const float d = mask[i] * values.density[i];
      for (auto c = 0; c < 3; ++c) albedo.c[c][i] *= color_scale * d;
      out.extinction[i] += scale * d;
    }
    if (volume.light_field && ray.lighting) light_up(albedo, *volume.light_field, ray, points);
    for (auto c = 0; c < 3; ++c)
      for (int i = 0; i < n; ++i) out.emission.c[c][i] += albedo.c[c][i];
  }

  if (volume.depth_fade) {
    alignas(64) float depth[kBlock], fade[kBlock];
    for (int i = 0; i < n; ++i) depth[i] = points.t[i] * static_cast<float>(kMetersPerUnit);
    evaluate_curve(fade, *volume.depth_fade, depth, n);
    for (int i = 0; i < n; ++i) {
      for (auto c = 0; c < 3; ++c) out.emission.c[c][i] *= fade[i];
      out.extinction[i] *= fade[i];
    }
  }
}

void density(float* extinction, const RenderVolume& volume, const Points& points) {
  alignas(64) float b[kBlock], mask[kBlock];
  std::fill_n(mask, kBlock, 1.0f);
  std::fill_n(extinction, kBlock, 0.0f);
  if (volume.fire.on) {
    plain_density(b, volume, volume.fire, points);
    const float scale = volume.fire.density_scale;
    const float mask_scale = volume.fireMaskScale;
    for (int i = 0; i < points.n; ++i) {
      extinction[i] = scale * b[i];
      mask[i] = mask_of(b[i], mask_scale);
    }
  }
  if (volume.smoke.on) {
    plain_density(b, volume, volume.smoke, points);
    const float scale = volume.smoke.density_scale;
    for (int i = 0; i < points.n; ++i) extinction[i] += scale * mask[i] * b[i];
  }
}

}  // namespace nbx
