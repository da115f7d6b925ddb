#include "host/render/surfaces/glow_ray.h"

#include "host/render/color.h"

namespace host {
namespace {

/// Directions of each kind. Less light comes over mirrors, so they get fewer.
struct Counts {
  int toward_glow = 3, by_cosine = 1, by_highlight = 2;
  constexpr int Sum() const { return toward_glow + by_cosine + by_highlight; }
};
constexpr Counts kStraight, kOverMirror{2, 1, 1};

double Fraction(double x) { return x - std::floor(x); }

/// Evenly distributed points in one to three dimensions: multiples of the inverse powers of the
/// generalized golden ratio (M. Roberts, 2018).
constexpr double kGolden2[] = {0.7548776662466927, 0.5698402909980532};
constexpr double kGolden3[] = {0.8191725133961645, 0.6710436067037893, 0.5497004779019703};

struct Candidate {
  Vector direction;
  SurfaceShading::Lobes lobes;
  double target = 0;  ///< the expected light from there, after the surface
  double weight = 0;
};

/// The directions drawn so far.
class Candidates {
 public:
  Candidates(const SurfaceShading& shading, const GlowView& view)
      : counts(view.Mirror() ? kOverMirror : kStraight), shading_(shading), view_(view) {}

  void Add(const Vector& direction) {
    Candidate& c = list_[count_];
    c.lobes = shading_.LobesTo(direction);
    const Vector share = c.lobes.diffuse + c.lobes.gloss;
    if (IsBlack(share)) return;
    const GlowView::Sight sight = view_.Look(direction);
    c.target = Mean(Times(share, sight.light));
    if (c.target <= 0) return;
    double density = counts.by_cosine * c.lobes.diffuse_density;
    if (view_.CanSample()) density += counts.toward_glow * sight.density;
    if (shading_.HasGloss()) density += counts.by_highlight * c.lobes.gloss_density;
    c.direction = direction;
    c.weight = c.target / density;
    sum_ += c.weight;
    ++count_;
  }

  GlowRay Choose(double pick) const {
    if (count_ == 0) return {};
    double rest = pick * sum_;
    int i = 0;
    while (i + 1 < count_ && rest >= list_[i].weight) rest -= list_[i++].weight;
    const Candidate& c = list_[i];
    const double factor = sum_ / (c.target * kPi);
    // Effects may treat the two kinds of rays differently, so the ray is of one kind.
    const double diffuse = Mean(c.lobes.diffuse), gloss = Mean(c.lobes.gloss);
    const double chance = diffuse / (diffuse + gloss);
    if (gloss <= 0 || rest < chance * c.weight)
      return {c.direction, c.lobes.diffuse * (factor / chance), kRayIndirect};
    return {c.direction, c.lobes.gloss * (factor / (1 - chance)), kRayRoughReflection};
  }

  const Counts counts;

 private:
  const SurfaceShading& shading_;
  const GlowView& view_;
  std::array<Candidate, kStraight.Sum()> list_;
  int count_ = 0;
  double sum_ = 0;
};

}  // namespace

GlowRay ChooseGlowRay(const SurfaceShading& shading, const GlowView& view, Sampler& sampler) {
  Candidates candidates(shading, view);
  const auto [brick, pick] = sampler.Next2D();
  if (view.CanSample()) {
    const std::uint64_t bits = sampler.NextSeed();
    const auto place = [bits](int axis, int i) {
      return Fraction((bits >> (21 * axis) & 0x1fffff) * 0x1p-21 + i * kGolden3[axis]);
    };
    const int count = candidates.counts.toward_glow;
    for (int i = 0; i < count; ++i)
      candidates.Add(view.Sample((i + brick) / count, place(0, i), place(1, i), place(2, i)));
  }
  const auto [u, v] = sampler.Next2D();
  const auto at = [](double start, int axis, int i) {
    return Fraction(start + i * kGolden2[axis]);
  };
  for (int i = 0; i < candidates.counts.by_cosine; ++i)
    candidates.Add(shading.DiffuseDirection(at(u, 0, i), at(v, 1, i)));
  if (shading.HasGloss()) {
    const auto [s, t] = sampler.Next2D();
    for (int i = 0; i < candidates.counts.by_highlight; ++i)
      candidates.Add(shading.GlossDirection(at(s, 0, i), at(t, 1, i)));
  }
  return candidates.Choose(pick);
}

}  // namespace host
