#include "render/march/march.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "render/march/motion_blur.h"
#include "render/shading.h"

namespace nbx {

namespace {

constexpr double kMostSteps = 1e8;  // in a stretch: a longer one gets longer steps
constexpr int kFirstSteps = 4;      // adaptive steps to evaluate at once after a change of length

// The samples of a block in voxel coordinates of an entry. Those beyond n repeat the last one.
void place(Points& points, const VolumeEntry& entry, const double* t, int n) {
  const Vec3d &o = entry.voxelOrigin, &d = entry.voxelDirection;
  const MarchKernels& kernels = march_kernels();
  points.n = n;
  kernels.place(points.x, o[0], d[0], t, kBlock);
  kernels.place(points.y, o[1], d[1], t, kBlock);
  kernels.place(points.z, o[2], d[2], t, kBlock);
  kernels.place(points.t, 0, 1, t, kBlock);
}

void spread(double* t, double start, double step, int n) {
  for (int i = 0; i < kBlock; ++i) t[i] = start + std::min(i, n - 1) * step;
}

template <class T, class Element>
constexpr std::array<T, kBlock> block_of(Element element) {
  std::array<T, kBlock> block{};
  for (int i = 0; i < kBlock; ++i) block[i] = element(i);
  return block;
}

bool is_blurred(const RenderVolume& volume) { return volume.blurTime > 0 && volume.has_velocity(); }

// Calls body(points, share, from) as walk_flow does. Without motion blur that is one call, in which
// each point counts in full.
template <class Body>
void over_shutter(const RenderVolume& volume, const Points& points, Body body) {
  if (is_blurred(volume)) return walk_flow(volume, points, body);
  static constexpr auto whole = block_of<float>([](int) { return 1.0f; });
  static constexpr auto same = block_of<int>([](int i) { return i; });
  body(points, whole.data(), same.data());
}

// Adaptive steps that follow one another.
struct StepRun {
  int n = 0;
  double ends[kBlock], middles[kBlock];  // beyond n the last middle is repeated
  float lengths[kBlock];
};

// Up to `count` steps from `begin` towards `end`, all of the length `step` but for the first, which
// ends at `first_end`, and one that reaches the end.
void plan_steps(StepRun& run, double begin, double first_end, double end, double step, int count) {
  run.n = 0;
  for (double from = begin, to = first_end; run.n < count && from < end;) {
    run.ends[run.n] = to;
    run.lengths[run.n] = to - from;
    run.middles[run.n++] = 0.5 * (from + to);
    from = to;
    to = std::min(from + step, end);
  }
  std::fill(run.middles + run.n, run.middles + kBlock, run.middles[run.n - 1]);
}

}  // namespace

March::March(const VolumeRenderer& renderer, RayRecord& ray, std::span<const VolumeEntry> entries)
    : renderer_(renderer), ray_(ray), entries_(entries), random_(ray.seed) {
  incoming_ = std::max({ray.transmittance[0], ray.transmittance[1], ray.transmittance[2]});
}

void March::finish() {
  for (int c = 0; c < 3; ++c) {
    ray_.radiance[c] += static_cast<float>(ray_.transmittance[c] * radiance_[c]);
    ray_.transmittance[c] = ray_.transmittance[c] * transmittance_;
  }
}

March::StepLengths March::step_lengths(double RenderVolume::*share) const {
  StepLengths lengths{HUGE_VAL, HUGE_VAL, true};
  for (const VolumeEntry& entry : entries_) {
    if (!entry.active) continue;
    const RenderVolume& v = *entry.volume;
    lengths.shortest = std::min(lengths.shortest, v.*share * v.voxelLength);
    lengths.longest = std::min(lengths.longest, v.voxelLength);
    // Noise moves look-ups farther than the proximity allows for.
    if (v.smoke.noise.on() || v.fire.noise.on()) lengths.skip_empty = false;
  }
  return lengths;
}

double March::empty_distance_at(double t) const {
  double least = HUGE_VAL;
  for (const VolumeEntry& entry : entries_)
    if (entry.active) least = std::min(least, empty_distance(entry, t));
  return least;
}

void March::sum_volumes(BlockSums& sums, const double* t, int n) const {
  sums = {};
  for (const VolumeEntry& entry : entries_) {
    if (!entry.active) continue;
    const RenderVolume& v = *entry.volume;
    Points points;
    place(points, entry, t, n);
    over_shutter(v, points, [&](const Points& q, const float* share, const int* from) {
      Shaded shaded;
      if (v.matte) {
        // Emission in proportion to extinction shows the plain color, as opaque as the gas.
        shade_extinction(shaded.extinction, v, q);
        for (int c = 0; c < 3; ++c)
          for (int i = 0; i < q.n; ++i)
            shaded.emission.c[c][i] = v.matteColor[c] * shaded.extinction[i];
      } else {
        shade(shaded, v, ray_, q);
      }
      const float scale = v.sigmaScale;
      for (int i = 0; i < q.n; ++i) {
        const int at = from[i];
        const float s = shaded.extinction[i] * share[i];
        for (int c = 0; c < 3; ++c) sums.emission.c[c][at] += shaded.emission.c[c][i] * share[i];
        sums.extinction[at] += s;
        sums.sigma[at] += s * scale;
      }
    });
  }
}

void March::sum_sigma(float* sigma, const double* t, int n) const {
  std::fill_n(sigma, kBlock, 0.0f);
  for (const VolumeEntry& entry : entries_) {
    if (!entry.active) continue;
    Points points;
    place(points, entry, t, n);
    const RenderVolume& volume = *entry.volume;
    const float scale = volume.sigmaScale;
    alignas(64) float extinction[kBlock];
    if (!is_blurred(volume)) {
      shade_extinction(extinction, volume, points);
      for (int i = 0; i < kBlock; ++i) sigma[i] += i < n ? extinction[i] * scale : 0.0f;
      continue;
    }
    walk_flow(volume, points, [&](const Points& q, const float* share, const int* from) {
      shade_extinction(extinction, volume, q);
      for (int i = 0; i < q.n; ++i) sigma[from[i]] += extinction[i] * share[i] * scale;
    });
  }
}

std::optional<GasRay> March::gas_ray() const {
  std::optional<GasRay> ray;
  for (const VolumeEntry& entry : entries_) {
    if (!entry.active) continue;
    if (ray || is_blurred(*entry.volume)) return {};
    ray.emplace();
    if (!bind_gas(ray->gas, *entry.volume)) return {};
    for (int axis = 0; axis < 3; ++axis) {
      ray->origin[axis] = entry.voxelOrigin[axis];
      ray->direction[axis] = entry.voxelDirection[axis];
    }
    ray->scale = entry.volume->sigmaScale;
  }
  return ray;
}

// Below the cutoff, half of the rays end with transmittance 0 and the others count twice. The mean
// stays the same, and rays don't march on through darkness.
bool March::survives_roulette() {
  if (!(transmittance_ * incoming_ < renderer_.cutoff)) return true;
  transmittance_ = random_.coin() ? 0 : 2 * transmittance_;
  return transmittance_ > 0;
}

// Over a step of length dt, with constant E, S and K and with loss = 1 - e^(-K dt),
//
//     radiance += T loss / S E,   T *= 1 - loss
//
// Dividing by S instead of K makes the color of gas independent of the object's scale.
bool March::add_step(const BlockSums& sums, float loss, int i) {
  if (!(sums.extinction[i] > 0)) return true;
  const double w = transmittance_ * loss / sums.extinction[i];
  for (int c = 0; c < 3; ++c) radiance_[c] += w * sums.emission.c[c][i];
  transmittance_ *= 1 - static_cast<double>(loss);
  return survives_roulette();
}

double March::contribution(const BlockSums& sums, float loss, int i) const {
  const Color E = sums.emission.at(i);
  return transmittance_ * incoming_ * loss / sums.extinction[i] * std::max({E[0], E[1], E[2]});
}

bool March::view(double begin, double end) {
  const StepLengths lengths = step_lengths(&RenderVolume::viewStep);
  if (!(lengths.shortest > 0) || !(end > begin)) return true;
  return renderer_.adaptive ? view_adaptive(begin, end, lengths) : view_fixed(begin, end, lengths);
}

template <class Body>
bool March::for_each_block(double begin, double end, const StepLengths& lengths, const Body& body) {
  const double count = std::min(std::ceil((end - begin) / lengths.shortest), kMostSteps);
  const double step = (end - begin) / count;
  const double first = begin + random_.uniform() * step;
  for (double taken = 0; taken < count;) {
    const double start = first + taken * step;
    if (lengths.skip_empty) {
      const double empty = empty_distance_at(start);
      if (empty >= step) {
        taken += std::floor(empty / step);
        continue;
      }
    }
    const int n = std::min<double>(kBlock, count - taken);
    if (!body(start, step, n)) return false;
    taken += n;
  }
  return true;
}

bool March::view_fixed(double begin, double end, const StepLengths& lengths) {
  BlockSums sums;
  alignas(64) float depth[kBlock], loss[kBlock];
  return for_each_block(begin, end, lengths, [&](double start, double step, int n) {
    double t[kBlock];
    spread(t, start, step, n);
    sum_volumes(sums, t, n);
    for (int i = 0; i < kBlock; ++i) depth[i] = sums.sigma[i] * static_cast<float>(step);
    march_kernels().absorb(loss, depth, n);
    for (int i = 0; i < n; ++i)
      if (!add_step(sums, loss[i], i)) return false;
    return true;
  });
}

// Steps halve where they contribute much and double where they contribute little. Together they
// cover [begin, end] exactly.
bool March::view_adaptive(double begin, double end, const StepLengths& lengths) {
  const double whole = end - begin;
  const double longest = whole / std::min(std::ceil(whole / lengths.longest), kMostSteps);
  double step = std::max(lengths.shortest, whole / kMostSteps);
  // The first step has a random length. It shifts all others, so that rays side by side don't
  // sample the gas in the same layers.
  double done = begin, next_end = std::min(begin + random_.uniform() * step, end);
  int count = kFirstSteps;
  StepRun run;
  BlockSums sums;
  alignas(64) float depth[kBlock]{}, loss[kBlock];
  while (done < end) {
    // Evaluate several steps of the present length at once, each in its middle.
    plan_steps(run, done, next_end, end, step, count);
    sum_volumes(sums, run.middles, run.n);
    for (int i = 0; i < run.n; ++i) depth[i] = sums.sigma[i] * run.lengths[i];
    march_kernels().absorb(loss, depth, run.n);

    // Take them one by one until the length changes. The others are dropped.
    bool changed = false;
    for (int i = 0; i < run.n && !changed; ++i) {
      if (!(sums.extinction[i] > 0)) {
        done = run.ends[i];
        continue;
      }
      const double light = contribution(sums, loss[i], i);
      if (step > lengths.shortest && light > renderer_.adaptiveThreshold) {
        step *= 0.5;  // this step is tried again at half its length
        changed = true;
        continue;
      }
      if (!add_step(sums, loss[i], i)) return false;
      done = run.ends[i];
      if (2 * step <= longest && light < renderer_.adaptiveThreshold * 0.25) {
        step *= 2;
        changed = true;
      }
    }
    next_end = std::min(done + step, end);
    // Near a change of length few steps are dropped; far from it full blocks are evaluated.
    count = changed ? kFirstSteps : std::min(2 * count, kBlock);
  }
  return true;
}

bool March::shadow(double begin, double end) {
  const StepLengths lengths = step_lengths(&RenderVolume::shadowStep);
  if (!(lengths.shortest > 0) || !(end > begin)) return true;
  // Roulette as in survives_roulette, in optical depths. To double the transmittance is to take
  // ln 2 from the depth.
  const double depth_before = -std::log(transmittance_ * incoming_);
  const double cutoff_depth = -std::log(renderer_.cutoff);
  double depth = 0;  // of this stretch
  alignas(64) double rise[kBlock];
  const std::optional<GasRay> ray = gas_ray();
  const bool whole = for_each_block(begin, end, lengths, [&](double start, double step, int n) {
    if (ray) {
      march_kernels().depths(rise, *ray, start, step, n);
    } else {
      double t[kBlock];
      alignas(64) float sigma[kBlock];
      spread(t, start, step, n);
      sum_sigma(sigma, t, n);
      for (int i = 0; i < kBlock; ++i) rise[i] = std::max(0.0f, sigma[i]) * step;
    }
    // The depth only rises, so if it is below the cutoff after the block, it always was.
    double after = depth;
    for (const double r : rise) after += r;
    if (depth_before + after <= cutoff_depth) {
      depth = after;
      return true;
    }
    for (int i = 0; i < n; ++i) {
      if (!(rise[i] > 0)) continue;
      depth += rise[i];
      if (depth_before + depth <= cutoff_depth) continue;
      if (random_.coin()) return false;
      depth -= std::numbers::ln2;
    }
    return true;
  });
  transmittance_ *= whole ? std::exp(-depth) : 0;
  return whole;
}

}  // namespace nbx
