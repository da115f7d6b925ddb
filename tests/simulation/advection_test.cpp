#include "simulation/advection.h"

#include <cmath>
#include <limits>

#include "math/mfield_operations.h"
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
  Flow(const Vec3i& centre, const Vec3f& v) {
    params.dt = params.dx = 1;
    params.settings = &settings;
    for (int a = 0; a < 3; ++a) {
      velocity[a].resize(kCpu, face_dims(centre, static_cast<Lookup>(a)));
      params.velocity[a] = &velocity[a];
      m_set(velocity[a], v[a]);
    }
    keep_traces(true);
  }

  void keep_traces(bool keep) {
    for (int a = 0; a < 3; ++a) {
      params.trace_back[a] = keep ? &back[a] : nullptr;
      params.trace_fwd[a] = keep ? &fwd[a] : nullptr;
    }
    params.back_stale = params.fwd_stale = true;
  }
  MField velocity[3], back[3], fwd[3];
  SimSettings settings;
  AdvectionParams params;
};

// The fast loops give the bits of the plain form for every choice, every instruction set, with
// traces cached by two threads and live on one.
void expect_plain_bits(const Vec3i& centre, bool wild) {
  Flow flow(centre, Vec3f());
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
  Flow flow(dims, Vec3f());
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

// Each lookup ends with its own boundary: closed walls hold their own component only.
TEST(Advection, BoundaryOfTheLookup) {
  const Vec3i centre(8, 8, 8);
  Flow flow(centre, Vec3f(0.1f, 0.1f, 0.1f));
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
  Flow flow(dims, Vec3f(1, 0, 0)), other(dims, Vec3f(0, 1, 0));
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
