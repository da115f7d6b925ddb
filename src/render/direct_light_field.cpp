#include "render/direct_light_field.h"

#include <atomic>
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

// Any thread that finds a cell empty computes it. Several threads may do so at once; they all store
// the same value. The third component is stored last: once it is there, the cell is complete.
bool load_cell(float* cell, Color& value) {
  value[2] = std::atomic_ref(cell[2]).load(std::memory_order_acquire);
  if (value[2] < 0) return false;
  value[0] = std::atomic_ref(cell[0]).load(std::memory_order_relaxed);
  value[1] = std::atomic_ref(cell[1]).load(std::memory_order_relaxed);
  return true;
}

void store_cell(float* cell, const Color& value) {
  std::atomic_ref(cell[0]).store(value[0], std::memory_order_relaxed);
  std::atomic_ref(cell[1]).store(value[1], std::memory_order_relaxed);
  std::atomic_ref(cell[2]).store(value[2], std::memory_order_release);
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
    for (int n = 0; n < count; ++n) caches_.emplace_back(dims, -1.0f);
  } catch (const std::bad_alloc&) {
    LogMessage() << "Failed to allocate field memory";
    throw;
  }
  return true;
}

void DirectLightField::query(Colors& light, Lighting& lighting, const RayRecord& ray,
                             const Points& points) {
  for (int i = 0; i < points.n; ++i) {
    const Vec3d point{points.x[i], points.y[i], points.z[i]};
    const Color color = query_at(lighting, ray, point);
    for (int c = 0; c < 3; ++c) light.c[c][i] = color[c];
  }
}

Color DirectLightField::query_at(Lighting& lighting, const RayRecord& ray, const Vec3d& point) {
  const Vec3d cell = point * params_.gridScale;
  Color sum{0, 0, 0};
  switch (params_.mode) {
    case LightCache::kLinear:
    case LightCache::kCubic:
      return cached(0, lighting, ray.thread, cell);
    case LightCache::kPerLight: {
      const Vec3d world = volume_->voxelToWorld(point);
      for (std::size_t n = 0; n < caches_.size(); ++n) {
        const Color color = cached(n, lighting, ray.thread, cell);
        const Vec3d place = lighting.lightPosition(n);
        add_scaled(sum, color,
                   phase(direction_from(world, place), ray.direction, params_.anisotropy));
      }
      return sum;
    }
    case LightCache::kNone:
      break;
  }
  const Vec3d world = volume_->voxelToWorld(point);
  for (int n = 0; n < lighting.lightCount(); ++n) {
    Color color{0, 0, 0};
    Vec3d direction;
    if (lighting.illuminate(n, *volume_, world, color, direction, ray.thread))
      add_scaled(sum, color, phase(direction, ray.direction, params_.anisotropy));
  }
  lighting.finish(sum);
  return sum;
}

Color DirectLightField::cached(std::size_t cache, Lighting& lighting, int thread,
                               const Vec3d& cell) {
  Field3& grid = caches_[cache];
  const auto corner = [&](int i, int j, int k) {
    float* at = grid.cell(grid.index(i, j, k));
    Color value;
    if (!load_cell(at, value)) {
      const double voxels = 1 / params_.gridScale;
      value = cell_light(cache, lighting, thread,
                         volume_->voxelToWorld({i * voxels, j * voxels, k * voxels}));
      store_cell(at, value);
    }
    return value;
  };
  const auto linear = [&] { return linear_light(cell, grid.dims, corner); };
  if (params_.mode != LightCache::kCubic) return linear();
  return cubic_light(cell, grid.dims, corner, linear);
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
