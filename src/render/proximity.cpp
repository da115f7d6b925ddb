#include "render/proximity.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "math/field_operators.h"
#include "math/field_reductions.h"
#include "math/lanes/spline_kernels.h"
#include "render/march/distance_transform.h"
#include "util/log.h"
#include "util/stopwatch.h"

namespace nbx {

namespace {

constexpr float kVisible = 1e-5f;  // lower extinctions count as empty
constexpr float kNoZone = -1;
constexpr float kReach = 3.5f;  // of cubic look-ups, in voxels

// Values at which a curve becomes visible or invisible, in rising order. Each span is sampled at
// 256 places, so narrower stretches are not found.
std::vector<float> visible_limits(const RationalSpline& curve, float scale) {
  std::vector<float> limits;
  if (curve.knots().empty()) return limits;
  bool visible = curve.knots().front().y * scale > kVisible;
  for (const SplineSpan& span : curve.spans())
    for (int n = 1; n <= 256; ++n) {
      const float v = span.x + span.width * float(n) / 256;
      if ((curve.evaluate(v) * scale > kVisible) == visible) continue;
      visible = !visible;
      limits.push_back(v);
    }
  return limits;
}

// Marks cells in `seen` with 1. `scratch` is a field of the same dimensions.
void mark_visible(Field<float>& seen, Field<float>& scratch, const VolumeShader& shader) {
  const Field<float>& grid = *shader.extinction_sampler().field;
  const RationalSpline& curve = shader.extinction_curve();
  const float scale = shader.density_scale;
  const int nx = std::min(seen.nx(), grid.nx()), ny = std::min(seen.ny(), grid.ny()),
            nz = std::min(seen.nz(), grid.nz());
  const SplineTable table = curve.table();
  const SplineKernels& kernels = spline_kernels();
#pragma omp parallel for schedule(static)
  for (int k = 1; k < nz - 1; ++k)
    for (int j = 1; j < ny - 1; ++j) {
      float* b = &scratch(0, j, k);
      kernels.evaluate(b, &grid(0, j, k), nx, table);
      float* row = &seen(0, j, k);
      for (int i = 1; i < nx - 1; ++i) row[i] = b[i] * scale > kVisible ? 1.0f : row[i];
    }

  // Two neighbors that show nothing count as visible if the values between theirs are visible, as
  // on the hull of a flame. The zones between the limits are numbered; visible cells have no
  // number.
  const std::vector<float> limits = visible_limits(curve, scale);
  if (limits.size() < 2) return;
#pragma omp parallel for schedule(static)
  for (int k = 1; k < nz - 1; ++k)
    for (int j = 1; j < ny - 1; ++j)
      for (int i = 1; i < nx - 1; ++i) {
        const float v = grid(i, j, k);
        int zone = 0;
        for (float limit : limits) zone += v >= limit;
        scratch(i, j, k) = seen(i, j, k) != 0 ? kNoZone : zone;
      }
  const auto mark_jump = [&](std::size_t at, std::size_t next) {
    if (scratch[next] != scratch[at] && scratch[next] != kNoZone) seen[at] = 1;
  };
  const std::size_t row = seen.nx();
  const std::size_t plane = row * seen.ny();
#pragma omp parallel for schedule(static)
  for (int k = 1; k < nz - 1; ++k)
    for (int j = 1; j < ny - 1; ++j)
      for (int i = 1; i < nx - 1; ++i) {
        const std::size_t at = seen.index(i, j, k);
        if (scratch[at] == kNoZone) continue;
        if (i > 1) mark_jump(at, at - 1);
        if (i < nx - 2) mark_jump(at, at + 1);
        if (j > 1) mark_jump(at, at - row);
        if (j < ny - 2) mark_jump(at, at + row);
        if (k > 1) mark_jump(at, at - plane);
        if (k < nz - 2) mark_jump(at, at + plane);
      }
}

// A cell is inside of the region, not on its surface, if all of its 26 neighbors are visible.
bool is_surface(const Field<float>& seen, int i, int j, int k) {
  for (int c = k - 1; c <= k + 1; ++c)
    for (int b = j - 1; b <= j + 1; ++b)
      for (int a = i - 1; a <= i + 1; ++a)
        if (seen(a, b, c) == 0) return true;
  return false;
}

}  // namespace

void build_proximity(RenderVolume& volume) {
  const Stopwatch watch;
  volume.proximity = nullptr;
  volume.near = {};
  volume.proximityShift = 0;
  if (!volume.shows()) return;
  const VolumeShader& first = volume.smoke.on ? volume.smoke : volume.fire;
  const Vec3i dims = first.color_sampler.field->dims();
  const FieldHandle seen = acquire_field(dims), distance = acquire_field(dims);
  set(*seen, 0);
  for (const VolumeShader* shader : {&volume.smoke, &volume.fire})
    if (shader->on) mark_visible(*seen, *distance, *shader);

  set(*distance, kFar);
#pragma omp parallel for schedule(static)
  for (int k = 1; k < dims[2] - 1; ++k)
    for (int j = 1; j < dims[1] - 1; ++j)
      for (int i = 1; i < dims[0] - 1; ++i)
        if ((*seen)(i, j, k) != 0 && is_surface(*seen, i, j, k)) (*distance)(i, j, k) = 0;

  if (infnorm(*seen) == 0) {
    const int largest = std::max({dims[0], dims[1], dims[2]});
    set(*distance, 1.75f * largest - kReach);
  } else {
    square_distances(*distance);
    const std::ptrdiff_t count = distance->count();
    float* d = distance->data();
    const float* s = seen->data();
#pragma omp parallel for simd schedule(static)
    for (std::ptrdiff_t n = 0; n < count; ++n)
      d[n] = (s[n] != 0 ? -std::sqrt(d[n]) : std::sqrt(d[n])) - kReach;
  }
  volume.proximity = distance;
  widen_proximity(volume);
  volume.near = NearBricks(*volume.proximity);
  LogMessage() << "Proximity in " << watch.seconds() << " s";
}

void widen_proximity(RenderVolume& volume) {
  if (!volume.proximity || !volume.has_velocity()) return;
  const double a = volume.smoke.displace, b = volume.fire.displace;
  if (a == 0 && b == 0 && volume.blurTime == 0) return;
  double square = 0;
  for (const FieldHandle& component : {volume.velU, volume.velV, volume.velW})
    square += std::pow(infnorm(*component), 2);
  const double fastest = std::sqrt(square);
  double reach = 0;
  if (a != 0 || b != 0) {
    const double k = std::abs(a) >= std::abs(b) ? a : b;
    reach += fastest * std::abs(k - volume.proximityShift);
    volume.proximityShift = k;
  }
  // How far the flow moves while the shutter is open.
  if (volume.blurTime > 0) reach += fastest * volume.blurTime * volume.voxelsPerMetre;
  if (reach > 0) add(*volume.proximity, *volume.proximity, -reach);
}

}  // namespace nbx
