#include "C4D/forecast/forecast.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace nbx {

namespace {

/// Cost of a substep: a + b cells.
struct StepCost {
  double a = 0, b = 0;
};

/// Fits the frames' `what` by least squares of the relative error. b is 0 if no frame has a cost.
StepCost fit(const std::vector<ProbeFrame>& frames, double ProbeFrame::*what) {
  double saa = 0, sab = 0, sbb = 0, sa = 0, sb = 0;  // sums of the normal equations
  for (const ProbeFrame& f : frames) {
    if (f.substeps < 1 || !(f.*what > 0)) continue;
    const double x = f.substeps / (f.*what), y = f.substeps * f.cells() / (f.*what);
    saa += x * x, sab += x * y, sbb += y * y, sa += x, sb += y;
  }
  if (sbb == 0) return {};
  const double det = saa * sbb - sab * sab;
  const double a = det > 1e-9 * saa * sbb ? std::max(0.0, (sa * sbb - sb * sab) / det) : 0.0;
  const double b = (sb - a * sab) / sbb;
  return b > 0 ? StepCost{a, b} : StepCost{0, sb / sbb};  // the times are noise
}

/// By the frames with the real voxels, if any of them has gas.
StepCost cost_of(const Probe& coarse, const Probe& fine, double ProbeFrame::*what) {
  const StepCost real = fit(fine.frames, what);
  return real.b > 0 ? real : fit(coarse.frames, what);
}

/// The last frame of both probes in which both have gas; null if there is none.
struct Meeting {
  const ProbeFrame* coarse = nullptr;
  const ProbeFrame* fine = nullptr;
};
Meeting find_meeting(const Probe& coarse, const Probe& fine) {
  Meeting at;
  for (std::size_t i = 0; i < std::min(coarse.frames.size(), fine.frames.size()); ++i)
    if (coarse.frames[i].cells() > 0 && fine.frames[i].cells() > 0)
      at = {&coarse.frames[i], &fine.frames[i]};
  return at;
}

/// The frames of the coarse probe up to the end of the range. Those that it lacks continue the
/// growth of its last third.
std::vector<ProbeFrame> whole_range(const Probe& coarse, int last) {
  std::vector<ProbeFrame> frames = coarse.frames;
  const std::size_t known = frames.size(), since = known - 1 - (known - 1) / 3;
  const ProbeFrame first = frames[since], end = frames.back();
  const double span = std::max<std::size_t>(known - 1 - since, 1);
  while (frames.back().frame < last) {
    ProbeFrame next = end;
    next.frame = frames.back().frame + 1;
    const double x = (next.frame - end.frame) / span;
    for (int axis = 0; axis < 3 && !first.box.empty(); ++axis) {
      const auto grown = [x](int from, int to) {
        return to + static_cast<int>(std::lround(x * (to - from)));
      };
      next.box.lo[axis] = std::max(0, grown(first.box.lo[axis], end.box.lo[axis]));
      next.box.hi[axis] =
          std::min(coarse.domain[axis] - 1, grown(first.box.hi[axis], end.box.hi[axis]));
    }
    for (double& bytes : next.bytes) bytes *= next.cells() / std::max(end.cells(), 1.0);
    frames.push_back(next);
  }
  return frames;
}

/// The part of a difference between the faces of both boxes that later frames keep: the margin of
/// the box and the thickness of sources are larger with larger voxels, but finer gas spreads more.
/// With 1 the boxes of turbulent plumes come out too small, with 0 those of calm ones too large.
constexpr double kLasting = 0.5;

/// Takes a coarse frame to the real voxels.
class Scaling {
 public:
  Scaling(const ForecastScene& scene, const Probe& coarse, const Probe& fine)
      : scene_(scene), k_(coarse.voxel_size / fine.voxel_size) {
    const auto [small, real] = find_meeting(coarse, fine);
    bytes_.fill(1);
    if (!small) return;
    for (int a = 0; a < 3; ++a) {
      lo_[a] = kLasting * (real->box.lo[a] - k_ * small->box.lo[a]);
      hi_[a] = kLasting * (real->box.hi[a] + 1 - k_ * (small->box.hi[a] + 1));
    }
    fit_travel(coarse, fine);
    for (std::size_t c = 0; c < bytes_.size(); ++c)
      if (small->bytes[c] > 0 && real->bytes[c] > 0)
        bytes_[c] = (real->bytes[c] / real->cells()) / (small->bytes[c] / small->cells());
  }

  IntBox box(const IntBox& coarse) const {
    if (coarse.empty()) return coarse;
    IntBox box;
    for (int a = 0; a < 3; ++a) {
      const double lo = k_ * coarse.lo[a] + lo_[a], hi = k_ * (coarse.hi[a] + 1) + hi_[a] - 1;
      const double end = scene_.domain[a] - 1.0;
      box.lo[a] = static_cast<int>(std::clamp(std::floor(lo), 0.0, end));
      box.hi[a] = static_cast<int>(std::clamp(std::ceil(hi), 1.0 * box.lo[a], end));
    }
    return box;
  }
  int substeps(double travel) const {
    const double wanted = std::ceil(travel * k_ * travel_);
    return static_cast<int>(std::clamp(wanted, 1.0, 1.0 * scene_.max_substeps));
  }
  double bytes(const ProbeFrame& coarse, std::size_t codec, double cells) const {
    return coarse.cells() > 0 ? bytes_[codec] * coarse.bytes[codec] / coarse.cells() * cells : 0;
  }

 private:
  /// The factor from 1/3 to 3 with which the common frames get as many substeps as they had; of
  /// several, the one nearest to 1.
  void fit_travel(const Probe& coarse, const Probe& fine) {
    const std::size_t common = std::min(coarse.frames.size(), fine.frames.size());
    const auto error = [&](double factor) {
      int sum = 0;
      for (std::size_t i = 0; i < common; ++i)
        if (coarse.frames[i].travel > 0 && fine.frames[i].substeps > 0)
          sum += substeps(factor * coarse.frames[i].travel) - fine.frames[i].substeps;
      return std::abs(sum);
    };
    double best = 1;
    for (int i = 1; i <= 20; ++i)
      for (const double factor : {std::pow(3.0, i / 20.0), std::pow(3.0, -i / 20.0)})
        if (error(factor) < error(best)) best = factor;
    travel_ = best;
  }

  const ForecastScene scene_;
  const double k_;
  Vec3d lo_, hi_;  // how far the real faces lie beyond k times the coarse ones
  double travel_ = 1;
  CodecBytes bytes_;
};

ForecastFrame as_forecast(const ProbeFrame& frame) {
  return {frame.frame, frame.cells(), frame.substeps, frame.seconds, frame.bytes};
}

void widen(Vec3i& largest, const IntBox& box) {
  if (box.empty()) return;
  const Vec3i n = box.size();
  if (1.0 * n[0] * n[1] * n[2] > 1.0 * largest[0] * largest[1] * largest[2]) largest = n;
}

}  // namespace

double Forecast::seconds() const {
  return std::accumulate(frames.begin(), frames.end(), 0.0,
                         [](double sum, const ForecastFrame& f) { return sum + f.seconds; });
}

double Forecast::longest_frame() const {
  double longest = 0;
  for (const ForecastFrame& frame : frames) longest = std::max(longest, frame.seconds);
  return longest;
}

CodecBytes Forecast::bytes() const {
  CodecBytes sum{};
  for (const ForecastFrame& frame : frames)
    for (std::size_t c = 0; c < sum.size(); ++c) sum[c] += frame.bytes[c];
  return sum;
}

Forecast forecast_run(const ForecastScene& scene, const Probe& coarse, const Probe& fine) {
  Forecast forecast;
  for (const ProbeFrame& frame : fine.frames) {
    forecast.frames.push_back(as_forecast(frame));
    widen(forecast.largest_box, frame.box);
  }
  if (fine.complete) return forecast;
  const Scaling scaling(scene, coarse, fine);
  const StepCost cost = cost_of(coarse, fine, &ProbeFrame::seconds);
  for (const ProbeFrame& small : whole_range(coarse, scene.last)) {
    if (small.frame <= fine.frames.back().frame) continue;
    const IntBox box = scaling.box(small.box);
    const ProbeFrame real{small.frame, box, scaling.substeps(small.travel), 0, 0, 0, {}};
    ForecastFrame frame{real.frame, real.cells(), real.substeps, 0, {}};
    frame.seconds = frame.substeps * (cost.a + cost.b * frame.cells);
    for (std::size_t c = 0; c < frame.bytes.size(); ++c)
      frame.bytes[c] = scaling.bytes(small, c, frame.cells);
    forecast.frames.push_back(frame);
    widen(forecast.largest_box, box);
  }
  return forecast;
}

Forecast forecast_upres(const ForecastScene& scene, const Forecast& plain, const Probe& coarse,
                        const Probe& fine, int factor) {
  const StepCost channels = cost_of(coarse, fine, &ProbeFrame::of_channels);
  const double n3 = std::pow(factor, 3);
  Forecast forecast{factor, factor * plain.largest_box, plain.frames};
  for (ForecastFrame& frame : forecast.frames) {
    frame.cells *= n3;
    frame.substeps = std::min(frame.substeps * factor, scene.max_substeps);
    frame.seconds = frame.substeps * (channels.a + channels.b * frame.cells) +
                    kUpresNoise * channels.b * frame.cells;
    for (double& bytes : frame.bytes) bytes *= n3;
  }
  return forecast;
}

}  // namespace nbx
