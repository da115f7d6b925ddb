#include "render/scattered_light_field.h"

#include <algorithm>
#include <cmath>
#include <new>

#include <omp.h>

#include "render/light/light_lookup.h"
#include "render/light/scatter_setup.h"
#include "util/log.h"
#include "util/stopwatch.h"

namespace nbx {

namespace {

constexpr float kDark = 0.01f;      // no further sweep once all light is below this
constexpr int kUnitsPerSweep = 60;  // of progress, ten per face

float infnorm(const Field3& f) {
  float largest = 0;
  for (const float value : f.data) largest = std::max(largest, std::abs(value));
  return largest;
}

// a = f a, b += a
void scale_and_add(Field3& a, Field3& b, float f) {
  for (std::size_t i = 0; i < a.data.size(); ++i) {
    a.data[i] *= f;
    b.data[i] += a.data[i];
  }
}

}  // namespace

bool ScatteredLightField::prepare(Lighting& lighting, const RenderVolume& volume, int threadCount,
                                  const ProgressCallback& progress) try {
  const int threads = threadCount < 1 ? omp_get_max_threads() : threadCount;
  const int units = params_.maxSweeps * kUnitsPerSweep;
  if (progress(0, units, 1, 2)) return false;
  Vec3i dims;
  for (int axis = 0; axis < 3; ++axis)
    dims[axis] = static_cast<int>(std::ceil(volume.dims[axis] * params_.gridScale));

  total_ = Field3(dims, 0);
  Field3 source(dims, 0);
  const RenderVolume still = bake_displacement(volume);
  if (!initial_light(total_, source, still, lighting, params_, threads, progress)) return false;
  const SweepMedium medium = scatter_medium(still, dims, params_, threads);

  const auto& axes = volume.worldToVoxel.rows;
  const double voxels_per_unit = std::hypot(axes[0][0], axes[1][0], axes[2][0]);
  const double cell_length = volume.metresPerUnit / (params_.gridScale * voxels_per_unit);
  return iterate(source, medium, cell_length, threads, progress);
} catch (const std::bad_alloc&) {
  LogMessage() << "Failed to allocate field memory";
  throw;
}

bool ScatteredLightField::iterate(Field3& source, const SweepMedium& medium, double cell_length,
                                  int threadCount, const ProgressCallback& progress) {
  const int units = params_.maxSweeps * kUnitsPerSweep;
  if (progress(0, units, 2, 2)) return false;
  const SweepGrid grid(source.dims, params_.directions, cell_length);
  Field3 gathered(source.dims, 0);
  Stopwatch since_report;
  for (int sweep = 0; sweep < params_.maxSweeps; ++sweep) {
    LogMessage() << "sweep " << sweep << " infnrm(U) " << infnorm(source);
    std::fill(gathered.data.begin(), gathered.data.end(), 0.0f);
    int face = 0;
    const auto slab_done = [&](int slabs, int of) {
      const int done = sweep * kUnitsPerSweep + face * 10 + slabs * 10 / of;
      if (slabs == of) ++face;
      if (since_report.seconds() < 0.5) return true;
      since_report.lap();
      return !progress(done, units, 2, 2);
    };
    if (!grid.sweep(gathered, source, medium, threadCount, slab_done)) return false;
    std::swap(source, gathered);
    scale_and_add(source, total_, grid.gather_factor());
    if (infnorm(source) < kDark) break;
  }
  const bool canceled = progress(units, units, 2, 2);
  LogMessage() << "done infnrm(U) " << infnorm(source) << " infnrm(I) " << infnorm(total_);
  return !canceled;
}

void ScatteredLightField::query(Colors& light, Lighting&, const RayRecord&, const Points& points) {
  const auto corner = [&](int i, int j, int k) {
    const float* cell = total_.cell(total_.index(i, j, k));
    return Color{cell[0], cell[1], cell[2]};
  };
  for (int n = 0; n < points.n; ++n) {
    const Vec3d cell = Vec3d(points.x[n], points.y[n], points.z[n]) * params_.gridScale;
    const auto linear = [&](const Vec3d& at) { return linear_light(at, total_.dims, corner); };
    Color color;
    if (params_.cubic) {
      Vec3d nearest = cell;
      for (int axis = 0; axis < 3; ++axis)
        nearest[axis] = std::clamp(nearest[axis], 0.0, std::max(total_.dims[axis] - 1.0, 0.0));
      color = cubic_light(cell, total_.dims, corner, [&] { return linear(nearest); });
    } else {
      color = linear(cell);
    }
    for (int c = 0; c < 3; ++c) light.c[c][n] = color[c];
  }
}

}  // namespace nbx
