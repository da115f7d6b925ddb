#include "render/light/scatter_setup.h"

#include <algorithm>
#include <atomic>

#include <omp.h>

#include "render/shading.h"
#include "util/stopwatch.h"

namespace nbx {

namespace {

Points row_block(const Vec3i& dims, int i, int j, int k, double cell) {
  Points points;
  points.n = std::min(kBlock, dims[0] - i);
  for (int n = 0; n < points.n; ++n) {
    points.x[n] = static_cast<float>((i + n) * cell);
    points.y[n] = static_cast<float>(j * cell);
    points.z[n] = static_cast<float>(k * cell);
    points.t[n] = 0;
  }
  return points;
}

// Calls body(points, cell) for blocks of cells along x, in parallel by rows.
template <class Body>
void for_blocks(const Vec3i& dims, double cell, int threads, const Body& body) {
#pragma omp parallel for collapse(2) schedule(dynamic, 1) num_threads(threads)
  for (int k = 0; k < dims[2]; ++k)
    for (int j = 0; j < dims[1]; ++j)
      for (int i = 0; i < dims[0]; i += kBlock) {
        const std::size_t at =
            static_cast<std::size_t>(i) +
            static_cast<std::size_t>(dims[0]) *
                (static_cast<std::size_t>(j) +
                 static_cast<std::size_t>(dims[1]) * static_cast<std::size_t>(k));
        body(row_block(dims, i, j, k, cell), at);
      }
}

// c and b of a shader at points as they are. Trilinear on demand.
void values_at(ShaderValues& out, const VolumeShader& shader, const Points& points, bool linear) {
  const auto look_up = [&](float* value, const ChannelSampler& sampler) {
    linear ? sampler.sample_linear(value, points) : sampler.sample(value, points);
  };
  alignas(64) float v[kBlock];
  look_up(v, shader.color_sampler);
  evaluate_curve(out.color, shader.color_curve, v, points.n);
  if (shader.density_sampler) look_up(v, shader.density_sampler);
  evaluate_curve(out.density, shader.extinction_curve(), v, points.n);
}

FieldHandle baked(const FieldHandle& field, const ChannelSampler& sampler,
                  const RenderVolume& volume, const VolumeShader& shader) {
  auto moved = std::make_shared<Field<float>>(field->nx(), field->ny(), field->nz());
  for_blocks({field->nx(), field->ny(), field->nz()}, 1, omp_get_max_threads(),
             [&](const Points& points, std::size_t at) {
               Points from = points;
               displace(from, volume, shader, points);
               alignas(64) float value[kBlock];
               sampler.sample(value, from);
               std::copy_n(value, points.n, moved->data() + at);
             });
  return moved;
}

void bake(VolumeShader& shader, const RenderVolume& volume, const VolumeShader& original) {
  if (!original.on) return;
  shader.color_sampler.field =
      baked(original.color_sampler.field, original.color_sampler, volume, original);
  if (original.density_sampler)
    shader.density_sampler.field =
        original.density_sampler.field == original.color_sampler.field
            ? shader.color_sampler.field
            : baked(original.density_sampler.field, original.density_sampler, volume, original);
}

// The fire of a block of cells: its extinction and what it leaves of the smoke.
struct FireValues {
  ShaderValues values;
  float extinction[kBlock], mask[kBlock];
};

void fire_at(FireValues& out, const RenderVolume& volume, const Points& points) {
  if (volume.fire.on) values_at(out.values, volume.fire, points, true);
  for (int n = 0; n < points.n; ++n) {
    const float b = volume.fire.on ? out.values.density[n] : 0;
    out.extinction[n] = static_cast<float>(volume.fire.density_scale) * b;
    out.mask[n] = volume.fire.on
                      ? std::clamp(1 - b * static_cast<float>(volume.fireMaskScale), 0.0f, 1.0f)
                      : 1.0f;
  }
}

}  // namespace

RenderVolume bake_displacement(const RenderVolume& volume) {
  RenderVolume still = volume;
  if (volume.smoke.displace != 0 || volume.fire.displace != 0) {
    bake(still.smoke, volume, volume.smoke);
    bake(still.fire, volume, volume.fire);
  }
  return still;
}

SweepMedium scatter_medium(const RenderVolume& volume, const Vec3i& dims,
                           const ScatteredLightParams& params, int threads) {
  SweepMedium medium;
  medium.dims = dims;
  medium.cells.resize(Field3(dims, 0).count());
  const bool voxels = params.gridScale == 1;
  for_blocks(dims, 1 / params.gridScale, threads, [&](const Points& points, std::size_t at) {
    FireValues fire;
    fire_at(fire, volume, points);
    ShaderValues smoke;
    Colors colors;
    if (volume.smoke.on) {
      values_at(smoke, volume.smoke, points, voxels);
      volume.smoke.ramp->lookup(colors, smoke.color, points.n);
    }
    for (int n = 0; n < points.n; ++n) {
      const float share = volume.smoke.on ? fire.mask[n] * smoke.density[n] : 0.0f;
      SweepMedium::Cell& cell = medium.cells[at + static_cast<std::size_t>(n)];
      cell.extinction =
          (fire.extinction[n] + share * static_cast<float>(volume.smoke.density_scale)) *
          params.extinctionScale;
      if (volume.smoke.on)
        for (std::size_t c = 0; c < 3; ++c)
          cell.scattering[c] = colors.c[c][n] * static_cast<float>(volume.smokeColorScale) * share;
    }
  });
  return medium;
}

bool initial_light(Field3& direct, Field3& source, const RenderVolume& still,
                   const RenderVolume& volume, Lighting& lighting,
                   const ScatteredLightParams& params, int threads,
                   const ProgressCallback& progress) {
  const double voxels = 1 / params.gridScale;
  const int rows = direct.dims[1] * direct.dims[2];
  const int row_blocks = (direct.dims[0] + kBlock - 1) / kBlock;
  std::atomic<int> blocks_done{0};
  std::atomic<bool> canceled{false};
  Stopwatch since_report;

  for_blocks(direct.dims, voxels, threads, [&](const Points& points, std::size_t at) {
    if (canceled) return;
    FireValues fire;
    fire_at(fire, still, points);
    Colors glow;
    if (still.fire.on) still.fire.ramp->lookup(glow, fire.values.color, points.n);
    ShaderValues smoke;
    if (still.smoke.on) values_at(smoke, still.smoke, points, true);
    for (int n = 0; n < points.n; ++n) {
      float* sent = source.cell(at + static_cast<std::size_t>(n));
      if (still.fire.on)
        for (std::size_t c = 0; c < 3; ++c) sent[c] = glow.c[c][n] * params.emissionWeight;
      if (!still.smoke.on || params.directWeight <= 0 || fire.mask[n] <= 0) continue;
      const float dense =
          fire.mask[n] * static_cast<float>(still.smoke.density_scale) * smoke.density[n];
      if (!(fire.extinction[n] > 0 || dense > 0)) continue;
      const Vec3d world = still.voxelToWorld({points.x[n], points.y[n], points.z[n]});
      Color sum{0, 0, 0};
      for (int light = 0; light < lighting.lightCount(); ++light) {
        Color color{0, 0, 0};
        Vec3d direction;
        if (!lighting.illuminate(light, volume, world, color, direction)) continue;
        for (std::size_t c = 0; c < 3; ++c) sum[c] += color[c];
      }
      lighting.finish(sum);
      float* arrives = direct.cell(at + static_cast<std::size_t>(n));
      for (std::size_t c = 0; c < 3; ++c) {
        arrives[c] = sum[c];
        sent[c] += sum[c] * params.directWeight;
      }
    }
    const int done = ++blocks_done / row_blocks;
    if (omp_get_thread_num() == 0 && since_report.seconds() >= 1) {
      since_report.lap();
      if (progress(done, rows, 1, 2)) canceled = true;
    }
  });
  return !canceled;
}

}  // namespace nbx
