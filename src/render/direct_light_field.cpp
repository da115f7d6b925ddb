#include "render/direct_light_field.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include "render/light/light_lookup.h"
#include "render/render_volume.h"
#include "util/log.h"

namespace nbx {

namespace {

double phase(const Vec3d& to_light, const Vec3d& ray, double g) {
  const double c = dot(to_light, ray) * g;
  const double square = (1 - c) * (1 - c);
  return (1 - g * g) / (square == 0 ? std::numeric_limits<double>::epsilon() : square);
}

void add_scaled(Color& sum, const Color& color, double share) {
  for (int c = 0; c < 3; ++c) sum[c] += color[c] * float(share);
}

Vec3d direction_from(const Vec3d& start, const Vec3d& end) {
  const Vec3d way = end - start;
  const double length = std::sqrt(dot(way, way));
  return length > 0 ? way * (1 / length) : Vec3d();
}

}  // namespace

bool DirectLightField::prepare(Lighting& lighting, const RenderVolume& volume, int,
                               const ProgressCallback&) {
  volume_ = &volume;
  caches_.clear();
  if (params_.mode == LightCache::kNone) return true;
  Vec3i dims;
  for (int axis = 0; axis < 3; ++axis)
    dims[axis] = static_cast<int>(std::ceil(volume.dims[axis] * params_.gridScale));
  const int count = params_.mode == LightCache::kPerLight ? lighting.lightCount() : 1;
  try {
    for (int n = 0; n < count; ++n) caches_.emplace_back(dims);
  } catch (const std::bad_alloc&) {
    LogMessage() << "Failed to allocate field memory";
    throw;
  }
  return true;
}

void DirectLightField::query(Colors& light, Lighting& lighting, const RayRecord& ray,
                             const Points& points) {
  if (caches_.size() == 1 && params_.mode != LightCache::kPerLight)
    return query_cache(light, caches_[0], 0, lighting, ray.thread, points);
  Color sums[kBlock]{};
  for (std::size_t n = 0; n < caches_.size(); ++n) {
    const Vec3d place = lighting.lightPosition(n);
    query_cache(light, caches_[n], n, lighting, ray.thread, points);
    for (int i = 0; i < points.n; ++i) {
      const Vec3d world = volume_->voxelToWorld({points.x[i], points.y[i], points.z[i]});
      add_scaled(sums[i], light.at(i),
                 phase(direction_from(world, place), ray.direction, params_.anisotropy));
    }
  }
  for (int i = 0; i < points.n; ++i) {
    if (params_.mode == LightCache::kNone)
      sums[i] =
          light_at(lighting, ray, volume_->voxelToWorld({points.x[i], points.y[i], points.z[i]}));
    for (int c = 0; c < 3; ++c) light.c[c][i] = sums[i][c];
  }
}

Color DirectLightField::light_at(Lighting& lighting, const RayRecord& ray, const Vec3d& world) {
  Color sum{0, 0, 0};
  for (int n = 0; n < lighting.lightCount(); ++n) {
    Color color{0, 0, 0};
    Vec3d direction;
    if (lighting.illuminate(n, *volume_, world, color, direction, ray.thread))
      add_scaled(sum, color, phase(direction, ray.direction, params_.anisotropy));
  }
  lighting.finish(sum);
  return sum;
}

void DirectLightField::query_cache(Colors& light, LazyLight& cache, std::size_t number,
                                   Lighting& lighting, int thread, const Points& points) {
  const double voxels = 1 / params_.gridScale;
  const auto compute = [&](int i, int j, int k) {
    return cell_light(number, lighting, thread,
                      volume_->voxelToWorld({i * voxels, j * voxels, k * voxels}));
  };
  const Vec3i dims = cache.dims();
  const bool cubic = params_.mode == LightCache::kCubic;
  if (!cubic && std::min({dims[0], dims[1], dims[2]}) >= 2)
    return cache.linear(light, points, params_.gridScale, compute);
  const auto corner = [&](int i, int j, int k) { return cache.cell(i, j, k, compute); };
  for (int n = 0; n < points.n; ++n) {
    const Vec3d cell = Vec3d{points.x[n], points.y[n], points.z[n]} * params_.gridScale;
    const auto linear = [&] { return linear_light(cell, dims, corner); };
    const Color color = cubic ? cubic_light(cell, dims, corner, linear) : linear();
    for (int c = 0; c < 3; ++c) light.c[c][n] = color[c];
  }
}

Color DirectLightField::cell_light(std::size_t cache, Lighting& lighting, int thread,
                                   const Vec3d& world) {
  Color sum{0, 0, 0};
  const bool one_light = params_.mode == LightCache::kPerLight;
  const int first = one_light ? cache : 0;
  const int end = one_light ? first + 1 : lighting.lightCount();
  const Vec3d sight = direction_from(params_.eye, world);
  for (int n = first; n < end; ++n) {
    Color color{0, 0, 0};
    Vec3d direction;
    if (!lighting.illuminate(n, *volume_, world, color, direction, thread)) continue;
    add_scaled(sum, color, one_light ? 1 : phase(direction, sight, params_.anisotropy));
  }
  lighting.finish(sum);
  return sum;
}

}  // namespace nbx
