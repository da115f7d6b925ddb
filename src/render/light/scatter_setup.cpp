#include "render/light/scatter_setup.h"

#include <algorithm>
#include <atomic>

#include <omp.h>

#include "render/shading.h"
#include "util/stopwatch.h"

namespace nbx {

namespace {

// `cell` is the edge of a cell in voxels.
Points row_block(const Vec3i& dims, int i, int j, int k, double cell) {
  Points points;
  points.n = std::min(kBlock, dims[0] - i);
  for (int n = 0; n < points.n; ++n) {
    points.x[n] = (i + n) * cell;
    points.y[n] = j * cell;
    points.z[n] = k * cell;
    points.t[n] = 0;
  }
  return points;
}

// Calls body(points, at, thread) for blocks of cells along x, of which the first has the index
// `at`. Rows are shared out among a team of threads, numbered from 0; thread 0 is the calling one.
template <class Body>
void for_blocks(const Vec3i& dims, double cell, int threads, const Body& body) {
#pragma omp parallel for collapse(2) schedule(dynamic, 1) num_threads(threads)
  for (int k = 0; k < dims[2]; ++k)
    for (int j = 0; j < dims[1]; ++j)
      for (int i = 0; i < dims[0]; i += kBlock)
        body(row_block(dims, i, j, k, cell), Field3::index(dims, i, j, k), omp_get_thread_num());
}

// The field as it appears at displaced points.
FieldHandle baked(const FieldHandle& field, const ChannelSampler& sampler,
                  const RenderVolume& volume, const VolumeShader& shader) {
  auto moved = std::make_shared<Field<float>>(field->nx(), field->ny(), field->nz());
  for_blocks({field->nx(), field->ny(), field->nz()}, 1, omp_get_max_threads(),
             [&](const Points& points, std::size_t at, int) {
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
  medium.cells.resize(Field3::count(dims));
  const ShaderLookup how{
      .displaced = false, .linear_fire = true, .linear_smoke = params.gridScale == 1};
  for_blocks(dims, 1 / params.gridScale, threads, [&](const Points& points, std::size_t at, int) {
    FireAndSmoke gas;
    fire_and_smoke(gas, volume, points, how);
    for (int n = 0; n < points.n; ++n) {
      SweepMedium::Cell& cell = medium.cells[at + n];
      cell.extinction = (gas.fire_extinction[n] + gas.smoke_extinction[n]) * params.extinctionScale;
      cell.scattering = gas.smoke_color.at(n);
    }
  });
  return medium;
}

bool initial_light(Field3& direct, Field3& source, const RenderVolume& volume, Lighting& lighting,
                   const ScatteredLightParams& params, int threads,
                   const ProgressCallback& progress) {
  const int rows = direct.dims[1] * direct.dims[2];
  const int row_blocks = (direct.dims[0] + kBlock - 1) / kBlock;
  const int lights = lighting.lightCount();
  const bool lit = volume.smoke.on && params.directWeight > 0;
  std::atomic<int> blocks_done{0};
  std::atomic<bool> canceled{false};
  Stopwatch since_report;

  const auto arriving = [&](const Vec3d& point, int thread) {
    Color sum{0, 0, 0};
    for (int light = 0; light < lights; ++light) {
      Color color{0, 0, 0};
      Vec3d direction;
      if (!lighting.illuminate(light, volume, point, color, direction, thread)) continue;
      for (int c = 0; c < 3; ++c) sum[c] += color[c];
    }
    lighting.finish(sum);
    return sum;
  };

  const ShaderLookup how{.displaced = false, .linear_fire = true, .linear_smoke = true};
  const auto light_block = [&](const Points& points, std::size_t at, int thread) {
    if (canceled) return;
    FireAndSmoke gas;
    fire_and_smoke(gas, volume, points, how);
    for (int n = 0; n < points.n; ++n) {
      float* sent = source.cell(at + n);
      for (int c = 0; c < 3; ++c) sent[c] = gas.fire_color.c[c][n] * params.emissionWeight;
      // Lights may be expensive, so cells that scatter nothing don't ask for them.
      if (!lit || gas.mask[n] <= 0) continue;
      if (!(gas.fire_extinction[n] > 0 || gas.smoke_extinction[n] > 0)) continue;
      const Color sum =
          arriving(volume.voxelToWorld({points.x[n], points.y[n], points.z[n]}), thread);
      float* arrives = direct.cell(at + n);
      for (int c = 0; c < 3; ++c) {
        arrives[c] = sum[c];
        sent[c] += sum[c] * params.directWeight;
      }
    }
    const int done = ++blocks_done / row_blocks;
    if (thread == 0 && since_report.seconds() >= 1) {
      since_report.lap();
      if (progress(done, rows, 1, 2)) canceled = true;
    }
  };
  for_blocks(direct.dims, 1 / params.gridScale, threads, light_block);
  return !canceled;
}

}  // namespace nbx
