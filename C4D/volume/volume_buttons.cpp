#include "C4D/volume/volume_buttons.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/settings/channel_choice.h"
#include "C4D/settings/shading_settings.h"
#include "C4D/settings/volume_cache.h"
#include "cache/cache_info.h"
#include "cache/slot_handle.h"
#include "render/color_ramp.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr int kLast = BlackbodyRamp::kCount - 1;

double brightest(const host::Vector& c) { return std::max({c.x, c.y, c.z}); }

/// A gradient that follows the colors of a table.
struct GradientFit {
  std::vector<host::Vector> colors;
  double floor = 0;  // an error that is always allowed
  host::Gradient gradient = {};

  const host::Vector& at(int i) const { return colors[i]; }

  /// Error at `i` of a straight line from `first` to `last`, relative to the allowed error.
  double excess(int first, int last, int i) const {
    const double t = 1.0 * (i - first) / (last - first);
    const host::Vector off = at(first) * (1 - t) + at(last) * t - at(i);
    return std::max({std::abs(off.x), std::abs(off.y), std::abs(off.z)}) /
           std::max(0.01 * brightest(at(i)), floor);
  }

  void add_knot(int i) { gradient.knots.push_back({1.0 * i / kLast, at(i)}); }

  /// Adds the knots after `first` up to `last`. Where a straight line misses too much, it is split
  /// at its worst place.
  void add_knots(int first, int last) {
    int worst = first;
    double most = 1;
    for (int i = first + 1; i < last; ++i)
      if (const double e = excess(first, last, i); e > most) worst = i, most = e;
    if (worst == first) return add_knot(last);
    add_knots(first, worst);
    add_knots(worst, last);
  }
};

}  // namespace

void bake_fire(host::BaseObject& volume) {
  const BlackbodyRamp ramp(blackbody_params(volume));
  const Color most = ramp.maxColor();
  const double largest = std::max({most[0], most[1], most[2]});
  if (!std::isfinite(largest)) {
    LogMessage() << "the glowing body is too bright for a gradient; raise fire_exposure";
    return;
  }
  const double scale = std::max(largest, 1.0);
  GradientFit fit{.colors = {}, .floor = largest / scale / 4096};
  for (int i = 0; i <= kLast; ++i) {
    const Color c = ramp.lookup(static_cast<float>(i) / kLast);
    fit.colors.push_back(host::Vector{c[0], c[1], c[2]} * (1 / scale));
  }
  fit.add_knot(0);
  fit.add_knots(0, kLast);
  host::BaseContainer& p = volume.GetDataInstance();
  p.SetGradient(OVOLUME.FIRE_GRADIENT, fit.gradient);
  p.SetReal(OVOLUME.FIRE_GRADIENT_SCALE, scale);
  p.SetLong(OVOLUME.FIRE_COLOR_MODE, OVOLUME_FIRE_COLOR_GRADIENT);
}

void measure_range(host::BaseObject& volume, const std::shared_ptr<BFS>& store) try {
  if (!store) return;
  const SlotHandle frame(store, frame_at_time(volume, volume.GetDocument().GetTime()), 0, true);
  if (!frame) return;
  float low = INFINITY, high = -INFINITY;
  for (const int type : channel_grids(ParameterReader(volume)(OVOLUME.DISPLAY_CHANNEL))) {
    const FieldHandle field = frame->grid(type);
    if (!field) continue;
    const ValueSummary values = summarize(*field);
    low = std::min(low, values.min);
    high = std::max(high, values.max);
  }
  if (low > high) return;
  host::BaseContainer& p = volume.GetDataInstance();
  p.SetReal(OVOLUME.DISPLAY_RANGE_MIN, low);
  p.SetReal(OVOLUME.DISPLAY_RANGE_MAX, high);
} catch (const std::exception& e) {
  LogMessage() << "the range of the frame can't be measured: " << e.what();
}

}  // namespace nbx
