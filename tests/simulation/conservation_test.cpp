// Transport that keeps the total of a channel: its parts, and runs with walls and solids.
#include "simulation/fluid/conservation.h"

#include <algorithm>
#include <limits>

#include "math/field_reductions.h"
#include "simulation/mac.h"
#include "simulation/scene_run.h"

namespace nbx {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

Domain domain_of(const Vec3i& n, std::array<int, 6> closed) {
  Domain domain;
  domain.domain_box = domain.active_box = {{0, 0, 0}, n - Vec3i(3, 3, 3)};
  domain.face_closed = closed;
  return domain;
}

// A block of gas two cells thick at each face. A flow along an axis by 2.3 cells takes all of the
// block that it leaves through; by 0.25 cells it takes an eighth.
TEST(Conservation, OutflowIsTheGasThatOpenFacesSweep) {
  const Vec3i n(8, 9, 10);
  for (int face = 0; face < 6; ++face)
    for (const double cells : {2.3, 0.25}) {
      const int axis = face / 2, b = (axis + 1) % 3, c = (axis + 2) % 3;
      test::Mac flow(n);
      set(flow.face(axis), face % 2 ? 5 : -5);
      const Sweep sweep{flow.U, flow.V, flow.W, cells / 5};
      MField field(kCpu, n);
      Field<float>& gas = field.write_cpu();
      test::each_cell(n, 1, [&](int i, int j, int k) {
        const int at = Vec3i(i, j, k)[axis];
        gas(i, j, k) = face % 2 ? at >= n[axis] - 3 : at <= 2;
      });
      std::array<int, 6> others{1, 1, 1, 1, 1, 1}, all = others;
      others[face] = 0;
      const double area = (n[b] - 2) * (n[c] - 2);
      const Domain open = domain_of(n, others);
      EXPECT_NEAR(outflow(gas, sweep, open), area * std::min(cells, 2.0), 1e-4);
      Domain closed = domain_of(n, all);
      EXPECT_EQ(outflow(gas, sweep, closed), 0);
      closed.wind.speed = 1;
      EXPECT_GT(outflow(gas, sweep, closed), 0) << "wind blows through walls";

      AdvectionParams params;
      MField velocity[3];
      for (int a = 0; a < 3; ++a) {
        velocity[a].assign(flow.face(a));
        params.velocity[a] = &velocity[a];
      }
      params.dt = sweep.step;
      params.domain = &open;
      advect_conserving(field, params);
      EXPECT_NEAR(sum(field.read_cpu()), area * std::max(2 - cells, 0.0), 1e-4);
    }
}

// A cell that doubles its volume, and its neighbor, which loses half of it.
TEST(Conservation, ExpandingGasThins) {
  const Vec3i n(6, 5, 5);
  test::Mac flow(n);
  flow.U(3, 2, 2) = 1;
  Field<float> gas(n[0], n[1], n[2]);
  std::fill_n(gas.data(), gas.count(), 4.0f);
  EXPECT_EQ(thin_by_expansion(gas, {flow.U, flow.V, flow.W, 1}), 4 * 4 * 3 * 3);
  EXPECT_EQ(gas(2, 2, 2), 2);
  EXPECT_EQ(gas(3, 2, 2), 8);
  EXPECT_EQ(gas(4, 2, 2), 4);
}

// Every cell stays within the values around it, and empty air stays empty, for any defect.
TEST(Conservation, TheCorrectionIsBounded) {
  const Vec3i n(37, 9, 8);
  Field<float> start(n[0], n[1], n[2]), first(n[0], n[1], n[2]);
  test::fill_random(start, 4, -1.0f, 1.0f);
  test::each_cell(n, 0, [&](int i, int j, int k) {
    float& v = start(i, j, k);
    v = i == 0 || j == 0 || k == 0 || i == 36 || j == 8 || k == 7 ? 0 : std::max(v, 0.0f);
  });
  const double before = sum(start);
  for (const double factor : {0.0, 0.9, 1.0, 1.1, 5.0}) {
    Field<float> same = test::copy_of(start);
    correct_total(first, same, factor * before);
    test::everywhere([&] {
      Field<float> moved = test::copy_of(start), dst(n[0], n[1], n[2]);
      correct_total(dst, moved, factor * before);
      EXPECT_TRUE(test::same_bits(dst, first));
    });
    if (factor > 0 && factor < 5) {
      EXPECT_NEAR(sum(first), factor * before, 1e-5 * before);
    }
    test::each_cell(n, 1, [&](int i, int j, int k) {
      float lo = start(i, j, k), hi = lo;
      for (int side = 0; side < 6; ++side) {
        Vec3i c(i, j, k);
        c[side / 2] = std::clamp(c[side / 2] + (side % 2 ? 1 : -1), 1, n[side / 2] - 2);
        lo = std::min(lo, start(c[0], c[1], c[2]));
        hi = std::max(hi, start(c[0], c[1], c[2]));
      }
      ASSERT_GE(first(i, j, k), lo);
      ASSERT_LE(first(i, j, k), hi + 1e-6f);
      ASSERT_TRUE(start(i, j, k) != 0 || first(i, j, k) == 0);
    });
  }
  // A field that isn't finite comes out as it is.
  for (const float wild : {kNaN, kInf}) {
    Field<float> bad = test::copy_of(start), dst(n[0], n[1], n[2]);
    bad(5, 5, 5) = wild;
    correct_total(dst, bad, before);
    EXPECT_EQ(dst(9, 2, 2), start(9, 2, 2));
  }
}

// A warm plume of density in a box of 24 cells. Returns the density at its end over that at its
// start.
double kept(bool conserve, bool cubic, bool solid) {
  test::BoxRun run;
  run.scene.cells = {24, 24, 24};
  run.scene.source = {{9, 2, 10}, {14, 6, 14}};
  run.scene.frames_of_source = 1;
  run.scene.settings = [&](StepSettings& s) {
    s.domain.face_closed = {1, 1, 1, 1, 1, 1};
    s.params.max_substeps = 3;
    s.params.interp_points = cubic ? 4 : 3;
    s.params.channel_params[kDensity].conserve = conserve;
  };
  int frame = 0;
  if (solid)  // a ball that moves through the plume
    run.scene.solids = [&](const RunView& view) {
      const float x = 6 + 0.25f * frame;
      const auto phi = [&](int i, int j, int k) {
        const float d = std::hypot(i - x, j - 14.0f, k - 12.0f) - 4;
        return d * std::abs(d);
      };
      return test::make_solids(view.domain, phi, static_cast<float>(0.25 * view.domain.dx / 0.04));
    };
  run.start();
  run.frames(1);
  const double start = sum(run.channel(kDensity));
  for (frame = 1; frame < 40; ++frame) run.frames(1);
  EXPECT_GE(min(run.channel(kDensity)), 0);
  return sum(run.channel(kDensity)) / start;
}

TEST(Conservation, AClosedBoxKeepsItsGas) {
  for (const bool cubic : {false, true}) {
    EXPECT_GT(std::abs(kept(false, cubic, false) - 1), 0.02) << "or the test has lost its point";
    EXPECT_NEAR(kept(true, cubic, false), 1, 1e-4);
    EXPECT_NEAR(kept(true, cubic, true), 1, 1e-4);
  }
}

// What sources emit inside of a solid disappears, as without `conserve`.
TEST(Conservation, SourcesInSolidsGiveNothing) {
  test::BoxRun run;
  run.scene.source = {{4, 4, 4}, {11, 11, 11}};
  run.scene.settings = [](StepSettings& s) {
    s.domain.face_closed = {1, 1, 1, 1, 1, 1};
    s.params.channel_params[kTemperature].buoyancy = 0;
    s.params.channel_params[kDensity].conserve = true;
  };
  run.scene.solids = [](const RunView& view) {
    return test::make_solids(
        view.domain, [](int i, int, int) { return i < 9 ? -1.0f : 1.0f; }, 0);
  };
  run.start();
  run.frames(3);
  EXPECT_EQ(sum(run.channel(kDensity)), 4 * 8 * 8);
}

}  // namespace
}  // namespace nbx
