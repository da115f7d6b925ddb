#include "render/march/march.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "render/march/motion_blur.h"
#include "render/shading.h"

namespace nbx {

namespace {

constexpr double kMostSteps = 1e8;  // of one stretch: beyond it steps get longer

bool blurs(const RenderVolume& volume) { return volume.blurTime > 0 && volume.has_velocity(); }

// The samples in an entry's voxel coordinates; those beyond n repeat the last one.
void place(Points& points, const VolumeEntry& entry, const double* t, int n) {
  const Vec3d &o = entry.voxelOrigin, &d = entry.voxelDirection;
  points.n = n;
  for (int i = 0; i < kBlock; ++i) {
    points.x[i] = static_cast<float>(o[0] + t[i] * d[0]);
    points.y[i] = static_cast<float>(o[1] + t[i] * d[1]);
    points.z[i] = static_cast<float>(o[2] + t[i] * d[2]);
    points.t[i] = static_cast<float>(t[i]);
  }
}

// Calls body(points, share, from) as walk_flow does, or once where nothing moves.
template <class Body>
void over_shutter(const RenderVolume& volume, const Points& points, Body body) {
  if (blurs(volume)) return walk_flow(volume, points, body);
  static constexpr float whole[kBlock] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  static constexpr int same[kBlock] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  body(points, whole, same);
}

}  // namespace

March::March(const VolumeRenderer& renderer, RayRecord& ray, std::span<const VolumeEntry> entries)
    : renderer_(renderer), ray_(ray), entries_(entries), random_(ray.seed) {
  incoming_ = std::max({ray.transmittance[0], ray.transmittance[1], ray.transmittance[2]});
}

void March::finish() {
  for (std::size_t c = 0; c < 3; ++c) {
    ray_.radiance[c] += static_cast<float>(ray_.transmittance[c] * radiance_[c]);
    ray_.transmittance[c] = static_cast<float>(ray_.transmittance[c] * transmittance_);
  }
}

March::Steps March::steps(double RenderVolume::*share) const {
  Steps steps{HUGE_VAL, HUGE_VAL, true};
  for (const VolumeEntry& entry : entries_) {
    if (!entry.active) continue;
    const RenderVolume& v = *entry.volume;
    steps.least = std::min(steps.least, v.*share * v.voxelLength);
    steps.most = std::min(steps.most, v.voxelLength);
    // The proximity doesn't know how far noise moves a look-up.
    steps.skips = steps.skips && !v.smoke.noise.on() && !v.fire.noise.on();
  }
  return steps;
}

double March::empty_distance_at(double t) const {
  double least = HUGE_VAL;
  for (const VolumeEntry& entry : entries_)
    if (entry.active) least = std::min(least, empty_distance(entry, t));
  return least;
}

void March::evaluate(BlockSums& sums, const double* t, int n) const {
  sums = {};
  for (const VolumeEntry& entry : entries_) {
    if (!entry.active) continue;
    const RenderVolume& v = *entry.volume;
    Points points;
    place(points, entry, t, n);
    over_shutter(v, points, [&](const Points& q, const float* share, const int* from) {
      Shaded shaded;
      if (v.matte) {
        // A plain color, as opaque as the gas is.
        density(shaded.extinction, v, q);
        for (std::size_t c = 0; c < 3; ++c)
          for (int i = 0; i < q.n; ++i)
            shaded.emission.c[c][i] = v.matteColor[c] * shaded.extinction[i];
      } else {
        shade(shaded, v, ray_, q);
      }
      const float scale = v.sigmaScale;
      for (int i = 0; i < q.n; ++i) {
        const int at = from[i];
        const float s = shaded.extinction[i] * share[i];
        for (auto c = 0; c < 3; ++c) sums.emission.c[c][at] += shaded.emission.c[c][i] * share[i];
        sums.extinction[at] += s;
        sums.sigma[at] += s * scale;
      }
    });
  }
}

void March::evaluate_shadow(float* sigma, const double* t, int n) const {
  std::fill_n(sigma, kBlock, 0.0f);
  for (const VolumeEntry& entry : entries_) {
    if (!entry.active) continue;
    Points points;
    place(points, entry, t, n);
    over_shutter(*entry.volume, points, [&](const Points& q, const float* share, const int* from) {
      alignas(64) float extinction[kBlock];
      density(extinction, *entry.volume, q);
      const float scale = entry.volume->sigmaScale;
      for (int i = 0; i < q.n; ++i) sigma[from[i]] += extinction[i] * share[i] * scale;
    });
  }
}

// With what is left of the ray below the cutoff, every second ray ends, with nothing, and the
// others count twice: the mean stays, and no ray marches on through darkness.
bool March::roulette() {
  if (!(transmittance_ * incoming_ < renderer_.cutoff)) return true;
  transmittance_ = random_.coin() ? 0 : 2 * transmittance_;
  return transmittance_ > 0;
}

// Over a step of length dt, in which E, S and K are constant,
//
//     radiance += T (1 - e^(-K dt)) / S E,   T *= e^(-K dt)
//
// Dividing by S rather than K leaves the color of gas independent of the object's scale.
bool March::add_step(const BlockSums& sums, const float* loss, int i) {
  if (!(sums.extinction[i] > 0)) return true;
  const double w = transmittance_ * loss[i] / sums.extinction[i];
  for (auto c = 0; c < 3; ++c) radiance_[c] += w * sums.emission.c[c][i];
  transmittance_ *= 1 - static_cast<double>(loss[i]);
  return roulette();
}

bool March::view(double a, double b) {
  const Steps s = steps(&RenderVolume::viewStep);
  if (!(s.least > 0) || !(b > a)) return true;
  return renderer_.adaptive ? view_adaptive(a, b, s) : view_fixed(a, b, s);
}

template <class Body>
bool March::each_block(double a, double b, const Steps& steps, const Body& body) {
  const double count = std::min(std::ceil((b - a) / steps.least), kMostSteps);
  const double dt = (b - a) / count;
  const double first = a + random_.uniform() * dt;
  for (double done = 0; done < count;) {
    const double start = first + done * dt;
    if (steps.skips) {
      const double empty = std::floor(empty_distance_at(start) / dt);
      if (empty >= 1) {
        done += empty;
        continue;
      }
    }
    const int n = static_cast<int>(std::min<double>(kBlock, count - done));
    double t[kBlock];
    for (int i = 0; i < kBlock; ++i) t[i] = start + std::min(i, n - 1) * dt;
    if (!body(t, n, dt)) return false;
    done += n;
  }
  return true;
}

bool March::view_fixed(double a, double b, const Steps& steps) {
  BlockSums sums;
  alignas(64) float depth[kBlock], loss[kBlock];
  return each_block(a, b, steps, [&](const double* t, int n, double dt) {
    evaluate(sums, t, n);
    for (int i = 0; i < kBlock; ++i) depth[i] = sums.sigma[i] * static_cast<float>(dt);
    march_kernels().absorb(loss, depth, n);
    for (int i = 0; i < n; ++i)
      if (!add_step(sums, loss, i)) return false;
    return true;
  });
}

// Steps halve where they contribute much and double where they contribute little. The first one has
// a random length, which shifts the others; they cover [a, b] exactly. Several steps of the present
// length are evaluated at once, and dropped when the length changes among them.
bool March::view_adaptive(double a, double b, const Steps& steps) {
  const double most = (b - a) / std::min(std::ceil((b - a) / steps.most), kMostSteps);
  double len = std::max(steps.least, (b - a) / kMostSteps);
  double lo = a, hi = std::min(a + random_.uniform() * len, b);
  int width = 4;
  BlockSums sums;
  alignas(64) float depth[kBlock], loss[kBlock];
  while (b > lo) {
    double ends[kBlock], t[kBlock];
    int n = 0;
    for (double from = lo, to = hi; n < width && from < b;) {
      ends[n] = to;
      t[n++] = 0.5 * (from + to);
      from = to;
      to = std::min(from + len, b);
    }
    std::fill(t + n, t + kBlock, t[n - 1]);
    evaluate(sums, t, n);
    std::fill_n(depth, kBlock, 0.0f);
    for (int i = 0; i < n; ++i)
      depth[i] = sums.sigma[i] * static_cast<float>(ends[i] - (i > 0 ? ends[i - 1] : lo));
    march_kernels().absorb(loss, depth, n);

    bool changed = false;
    for (int i = 0; i < n && !changed; ++i) {
      if (!(sums.extinction[i] > 0)) {
        lo = ends[i];
        continue;
      }
      const Color E = sums.emission.at(i);
      const double m =
          transmittance_ * incoming_ * loss[i] / sums.extinction[i] * std::max({E[0], E[1], E[2]});
      if (len > steps.least && m > renderer_.adaptiveThreshold) {
        len *= 0.5;
        changed = true;
        break;
      }
      if (!add_step(sums, loss, i)) return false;
      lo = ends[i];
      if (2 * len <= most && renderer_.adaptiveThreshold * 0.25 > m) {
        len *= 2;
        changed = true;
      }
    }
    hi = std::min(lo + len, b);
    width = changed ? 4 : std::min(2 * width, kBlock);
  }
  return true;
}

bool March::shadow(double a, double b) {
  const Steps s = steps(&RenderVolume::shadowStep);
  if (!(s.least > 0) || !(b > a)) return true;
  // Optical depth so far, less ln 2 for each time that the roulette spared the ray.
  const double sum = -std::log(transmittance_ * incoming_);
  const double limit = -std::log(renderer_.cutoff);
  alignas(64) float sigma[kBlock];
  double added = 0;
  const bool whole = each_block(a, b, s, [&](const double* t, int n, double dt) {
    evaluate_shadow(sigma, t, n);
    for (int i = 0; i < n; ++i) {
      if (!(sigma[i] > 0)) continue;
      added += sigma[i] * dt;
      if (sum + added <= limit) continue;
      if (random_.coin()) return false;
      added -= std::numbers::ln2;
    }
    return true;
  });
  transmittance_ *= whole ? std::exp(-added) : 0;
  return whole;
}

}  // namespace nbx
