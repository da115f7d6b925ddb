#include "simulation/advection.h"

#include <cmath>
#include <functional>
#include <limits>

#include "simulation/cpu_advection.h"
#include "simulation/plain_advection.h"
#include "support/support.h"
#include "util/exception.h"
#include "util/isa.h"

namespace nbx {
namespace {

constexpr Lookup kLookups[] = {Lookup::kWest, Lookup::kSouth, Lookup::kLow, Lookup::kCenter};
constexpr Isa kIsas[] = {Isa::kBaseline, Isa::kAvx2, Isa::kAvx512};
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kWild[] = {kNaN, kInf, -kInf, 1e30f, -3e9f};

Vec3i face_dims(Vec3i centre, Lookup lookup) {
  if (lookup != Lookup::kCenter) ++centre[static_cast<int>(lookup)];
  return centre;
}

// A velocity on faces and a record that advects along it.
struct Flow {
  // velocity = f(x, y, z) in centre coordinates, on each component's own faces.
  Flow(const Vec3i& centre, const std::function<Vec3d(const Vec3d&)>& f) {
    params.dt = params.dx = 1;
    params.settings = &settings;
    for (int a = 0; a < 3; ++a) {
      velocity[a].resize(kCpu, face_dims(centre, static_cast<Lookup>(a)));
      params.velocity[a] = &velocity[a];
      Field<float>& v = velocity[a].cpu_field();
      test::each_cell(v.dims(), 0, [&](int i, int j, int k) {
        Vec3d p(i, j, k);
        p[a] -= 0.5;
        v(i, j, k) = static_cast<float>(f(p)[a]);
      });
    }
    keep_traces(true);
  }
  Flow(const Vec3i& centre, const Vec3d& v) : Flow(centre, [v](const Vec3d&) { return v; }) {}

  void keep_traces(bool keep) {
    for (int a = 0; a < 3; ++a) {
      params.trace_back[a] = keep ? &back[a] : nullptr;
      params.trace_fwd[a] = keep ? &fwd[a] : nullptr;
    }
    params.back_stale = params.fwd_stale = true;
  }
  Vec3f traced(int i, int j, int k) {
    return {back[0].cpu_field()(i, j, k), back[1].cpu_field()(i, j, k),
            back[2].cpu_field()(i, j, k)};
  }

  MField velocity[3], back[3], fwd[3];
  SimSettings settings;
  AdvectionParams params;
};

// The fast loops give the bits of the plain form for every choice, every instruction set, with
// traces cached by two threads and live on one.
void expect_plain_bits(const Vec3i& centre, bool wild) {
  Flow flow(centre, Vec3d());
  AdvectionParams& q = flow.params;
  for (int a = 0; a < 3; ++a) {
    Field<float>& v = flow.velocity[a].cpu_field();
    test::fill_random(v, 10 + static_cast<unsigned>(a), -2.5f, 2.5f);
    for (std::size_t i = 0; wild && i < v.count(); i += 7) v[i] = kWild[i % 5];
  }
  q.dt = 0.9;
  q.tolerance = 0.8;
  for (int choice = 0; choice < 16; ++choice) {
    q.lookup = kLookups[choice % 4];
    q.tracer = static_cast<Tracer>(choice / 4 % 2);
    q.cubic = choice / 8;
    const Vec3i n = face_dims(centre, q.lookup);
    Field<float> src(n[0], n[1], n[2]), hat(n[0], n[1], n[2]), dst(n[0], n[1], n[2]);
    Field<float> plain_hat, plain_dst;
    test::fill_random(src, 3);
    test::plain_advect(plain_hat, plain_dst, src, q);
    for (const Isa isa : kIsas)
      for (const bool cached : {false, true}) {
        limit_isa(isa);
        const test::ThreadCount threads(cached ? 2 : 1);
        flow.keep_traces(cached);
        if (cached)
          for (const bool forward : {true, false}) cpu_cache_tracer(q, forward, n);
        std::fill_n(hat.data(), hat.count(), -7.0f);
        cpu_advect_sl(hat, src, q);
        cpu_maccormack(dst, src, hat, q);
        EXPECT_TRUE(test::same_bits(hat, plain_hat) && test::same_bits(dst, plain_dst))
            << "choice " << choice << " isa " << static_cast<int>(isa) << " cached " << cached
            << " centre " << centre[0] << ' ' << centre[1] << ' ' << centre[2];
      }
  }
}

// Rows shorter and longer than the lanes, the smallest grids, a row of more than one run.
TEST(Advection, FastLoopsGiveThePlainBits) {
  for (const Vec3i& centre : {Vec3i(21, 9, 8), Vec3i(18, 5, 5), Vec3i(7, 6, 12), Vec3i(34, 4, 4),
                              Vec3i(263, 5, 4), Vec3i(3, 3, 3), Vec3i(2, 3, 2), Vec3i(5, 2, 4)})
    expect_plain_bits(centre, false);
}

TEST(Advection, WildVelocitiesAndPositionsStayInsideOfMemory) {
  for (const Vec3i& centre : {Vec3i(21, 5, 6), Vec3i(3, 3, 3)}) expect_plain_bits(centre, true);

  const Vec3i dims(20, 6, 5);
  Flow flow(dims, Vec3d());
  MField src(kCpu, dims), dst;
  test::fill_random(src.cpu_field(), 1);
  advect(dst, src, flow.params);
  for (int a = 0; a < 3; ++a)
    for (MField* trace : {&flow.back[a], &flow.fwd[a]})
      for (std::size_t i = 0; i < src.cpu_field().count(); ++i)
        trace->cpu_field()[i] = kWild[(i + static_cast<std::size_t>(a)) % 5];
  for (const Isa isa : kIsas) {
    limit_isa(isa);
    flow.params.cubic = !flow.params.cubic;
    advect(dst, src, flow.params);
    for (std::size_t i = 0; i < src.cpu_field().count(); ++i)
      ASSERT_LE(std::abs(dst.cpu_field()[i]), 1.0f);
  }
}

// Under an affine velocity trilinear samples are exact, so the midpoint rule has a closed form:
// c - s v(c - s/2 v(c)) in centre coordinates, whatever faces the advected samples sit on. Here the
// adaptive tracer takes one step, too.
TEST(Advection, TracesAffineVelocityExactly) {
  const auto v = [](const Vec3d& p) {
    const Vec3d q = p - Vec3d(8, 8, 8);
    return Vec3d(0.3 + 0.10 * q[0] - 0.05 * q[1] + 0.02 * q[2],
                 0.1 + 0.07 * q[0] + 0.03 * q[1] - 0.04 * q[2],
                 -0.2 - 0.03 * q[0] + 0.06 * q[1] + 0.05 * q[2]);
  };
  const Vec3i centre(16, 17, 18);
  Flow flow(centre, v);
  flow.params.dx = 0.5;
  for (int choice = 0; choice < 16; ++choice) {
    const double dt = flow.params.dt = choice / 8 ? 0.25 : -0.25;
    flow.params.tracer = static_cast<Tracer>(choice / 4 % 2);
    flow.params.lookup = kLookups[choice % 4];
    cpu_cache_tracer(flow.params, true, face_dims(centre, flow.params.lookup));
    Vec3d offset;
    if (choice % 4 < 3) offset[choice % 4] = 0.5;
    for (int i = 3; i < 13; ++i) {
      const Vec3i c(i, 15 - i, 5 * i % 11 + 3);
      const Vec3d at = vector_cast<double>(c) - offset;
      const Vec3d expected = at - v(at - v(at) * dt) * (2 * dt) + offset;
      for (int a = 0; a < 3; ++a)
        EXPECT_NEAR(flow.traced(c[0], c[1], c[2])[a], expected[a], 4e-6) << choice;
    }
  }
}

// A quarter turn about the middle. A component moves by a quarter voxel at most in a step, so a
// step turns by e <= sqrt(2) / 4 / r and lags by e^3 / 6, as a midpoint step does to third order.
TEST(Advection, AdaptiveTracerFollowsACircle) {
  const Vec3i dims(41, 41, 5);
  Flow flow(dims, [](const Vec3d& p) { return Vec3d(20 - p[1], p[0] - 20, 0); });
  flow.params.tracer = Tracer::kAdaptive;
  flow.params.dt = std::acos(0.0);
  flow.params.tolerance = 0.25;
  cpu_cache_tracer(flow.params, true, dims);
  for (const int i : {2, 9, 17, 26, 38}) {
    const double r = std::abs(i - 20), e = std::sqrt(2.0) / 4 / r;
    const double bound = flow.params.dt * r * e * e / 6 + 3e-4;  // and the rounding of 150 steps
    EXPECT_NEAR(flow.traced(i, 20, 2)[0], 20, bound);
    EXPECT_NEAR(flow.traced(i, 20, 2)[1], 40 - i, bound);
  }
}

// Each lookup ends with its own boundary: closed walls hold their own component only.
TEST(Advection, BoundaryOfTheLookup) {
  const Vec3i centre(8, 8, 8);
  Flow flow(centre, Vec3d(0.1, 0.1, 0.1));
  flow.keep_traces(false);
  flow.settings.face_closed = {1, 1, 1, 1, 1, 1};
  flow.settings.domain_box = flow.settings.active_box = {Vec3i(0, 0, 0), Vec3i(5, 5, 5)};
  for (const Lookup lookup : kLookups) {
    flow.params.lookup = lookup;
    for (const auto& stage : {advect_sl, advect}) {
      MField src(kCpu, face_dims(centre, lookup)), dst;
      std::fill_n(src.cpu_field().data(), src.cpu_field().count(), 2.0f);
      stage(dst, src, flow.params);
      const Field<float>& g = dst.cpu_field();
      const bool scalar = lookup == Lookup::kCenter;
      EXPECT_EQ(g(1, 4, 4), lookup == Lookup::kWest ? 0.0f : 2.0f);
      EXPECT_EQ(g(4, 1, 4), lookup == Lookup::kSouth ? 0.0f : 2.0f);
      EXPECT_EQ(g(4, 4, 1), lookup == Lookup::kLow ? 0.0f : 2.0f);
      EXPECT_EQ(g(0, 4, 4), scalar || lookup == Lookup::kWest ? 0.0f : 2.0f);
    }
  }
}

TEST(Advection, StaleCachesAreRecomputedAndOthersAreUsed) {
  const Vec3i dims(8, 8, 8);
  Flow flow(dims, Vec3d(1, 0, 0)), other(dims, Vec3d(0, 1, 0));
  MField src(kCpu, dims), dst;
  Field<float>& f = src.cpu_field();
  test::fill_random(f, 2);
  const auto moved = [&] {
    advect(dst, src, flow.params);
    return dst.cpu_field()(4, 4, 4);
  };
  EXPECT_EQ(moved(), f(3, 4, 4));
  flow.params.velocity = other.params.velocity;
  EXPECT_EQ(moved(), f(3, 4, 4));
  flow.params.back_stale = flow.params.fwd_stale = true;
  EXPECT_EQ(moved(), f(4, 3, 4));
  EXPECT_FALSE(flow.params.back_stale || flow.params.fwd_stale);
  for (MField& trace : flow.back) trace.release();
  EXPECT_EQ(moved(), f(4, 3, 4));
  // Fields that don't fit the cache, or the velocity, are refused.
  MField odd(kCpu, {8, 8, 9});
  EXPECT_THROW(advect(dst, odd, flow.params), FieldDimensionMismatchException);
  flow.keep_traces(false);
  EXPECT_THROW(advect(dst, odd, flow.params), FieldDimensionMismatchException);
}

}  // namespace
}  // namespace nbx
