#include "host/scene/track.h"

#include <algorithm>
#include <cstddef>

namespace host {
namespace {

/// The slope at a key. d0 and d1 are the slopes of the chords before and after it, h0 and h1 their
/// widths. Zero at an extremum, otherwise a weighted harmonic mean:
///     m = d0 d1 / (alpha d1 + (1 - alpha) d0),   alpha = (h0 + 2 h1) / (3 (h0 + h1)).
double MonotoneSlope(double d0, double d1, double h0, double h1) {
  if (d0 * d1 <= 0) return 0;
  const double alpha = (h0 + 2 * h1) / (3 * (h0 + h1));
  return d0 * d1 / (alpha * d1 + (1 - alpha) * d0);
}

/// The slope of one component at key i.
template <class Component>
double SlopeAt(const std::vector<Key>& keys, std::size_t i, Component component) {
  if (i == 0 || i + 1 == keys.size()) return 0;
  const double h0 = keys[i].frame - keys[i - 1].frame, h1 = keys[i + 1].frame - keys[i].frame;
  const double p = component(keys[i]);
  return MonotoneSlope((p - component(keys[i - 1])) / h0, (component(keys[i + 1]) - p) / h1, h0,
                       h1);
}

/// One component at fraction t, in [0, 1), of the way from key i to key i + 1.
template <class Component>
double Between(const Track& track, std::size_t i, double t, Component component) {
  const double p0 = component(track.keys[i]), p1 = component(track.keys[i + 1]);
  if (track.interpolation == Interpolation::Linear) return p0 + t * (p1 - p0);
  const double h = track.keys[i + 1].frame - track.keys[i].frame;
  const double m0 = h * SlopeAt(track.keys, i, component);
  const double m1 = h * SlopeAt(track.keys, i + 1, component);
  // Cubic Hermite form: p0 + t m0 + t^2 (3 (p1 - p0) - 2 m0 - m1) + t^3 (m0 + m1 - 2 (p1 - p0)).
  const double d = p1 - p0;
  return p0 + t * (m0 + t * (3 * d - 2 * m0 - m1 + t * (m0 + m1 - 2 * d)));
}

}  // namespace

ParameterValue Track::Evaluate(double frame) const {
  const auto after = std::upper_bound(keys.begin(), keys.end(), frame,
                                      [](double f, const Key& key) { return f < key.frame; });
  if (after == keys.begin()) return keys.front().value;
  const std::size_t i = after - keys.begin() - 1;
  if (after == keys.end()) return keys[i].value;
  const double t = (frame - keys[i].frame) / (keys[i + 1].frame - keys[i].frame);

  if (std::holds_alternative<double>(keys[i].value))
    return Between(*this, i, t, [](const Key& key) { return std::get<double>(key.value); });
  if (!std::holds_alternative<Vector>(keys[i].value)) return keys[i].value;
  return Vector{Between(*this, i, t, [](const Key& key) { return std::get<Vector>(key.value).x; }),
                Between(*this, i, t, [](const Key& key) { return std::get<Vector>(key.value).y; }),
                Between(*this, i, t, [](const Key& key) { return std::get<Vector>(key.value).z; })};
}

void Track::Scale(double factor) {
  for (Key& key : keys) {
    if (auto* real = std::get_if<double>(&key.value)) *real *= factor;
    if (auto* vector = std::get_if<Vector>(&key.value)) *vector = *vector * factor;
  }
}

}  // namespace host
