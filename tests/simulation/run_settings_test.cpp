// What each setting of a run does to the velocity, held against formulas.
#include "math/field_operators.h"
#include "math/field_reductions.h"
#include "simulation/scene_run.h"
#include "simulation/steps/vorticity_system.h"

namespace nbx {
namespace {

// Gas that fills a box of n cells of 0.05 units, in the middle of a frame of two substeps.
struct Gas {
  explicit Gas(const Vec3i& n, const Vec3i& lo = {}) {
    s.active_box = s.domain_box = {lo, lo + n - Vec3i(1, 1, 1)};
    s.dx = 0.05;
    s.dt = 0.02;
    s.frame_duration = 0.04;
    s.sim_time.length = {1, 25};
    fluid.resize({});
    fluid.set_zero_velocity(false);
  }
  Field<float>& face(int axis) { return fluid.component(axis).cpu_field(); }

  SimSettings s;
  CuslKernels3D fluid{s};
};

// Gives the gas a speed, and notes what it was before that and what is left for the projection.
struct Push : VelocityForce, SolverProgress {
  void add_forces(FluidSystem& fluid, double) override {
    gas = &fluid;
    before = infnorm(fluid.U().cpu_field());
    for (int axis = 0; axis < 3; ++axis) set(fluid.component(axis).cpu_field(), 1000);
  }
  bool add_divergence(MField&, double) override {
    for (int axis = 0; axis < 3; ++axis) after[axis] = infnorm(gas->component(axis).cpu_field());
    return false;
  }
  bool abort_requested(int, int) override { return false; }

  FluidSystem* gas = nullptr;
  float before = 0;
  Vec3f after;
};

TEST(RunSettings, DragIsAShareOfAFrameAndTheClampTheWayAcrossTheGrid) {
  for (const bool clamp : {false, true}) {
    Gas gas({4, 6, 8});
    gas.s.drag = 0.36;
    gas.s.clamp_velocity = clamp;
    set(gas.face(0), 1);
    Push push;
    PressureSystem pressure(gas.s);
    gas.fluid.update(gas.s.dt, pressure, push, push);
    EXPECT_NEAR(push.before, 0.8, 1e-6) << "half a frame: the root of what a frame leaves";
    EXPECT_EQ(push.after, clamp ? Vec3f(7.5f, 10, 12.5f) : Vec3f(1000, 1000, 1000));
  }
}

TEST(RunSettings, TheLongestStepIsThatOfTheCflNumber) {
  Gas gas({4, 4, 4});
  gas.s.cfl = 1.5;
  set(gas.face(0), 3);
  set(gas.face(1), -4);
  EXPECT_DOUBLE_EQ(gas.fluid.max_step(), 1.5 * 0.05 / 5);
}

// A field that looks the same along each axis: were one component replaced while the others still
// need it, it would no longer.
TEST(RunSettings, ComponentsMoveAlongOneVelocity) {
  const auto moved = [](bool adaptive, int points) {
    Gas gas({12, 12, 12});
    gas.s.adaptive_tracer = adaptive;
    gas.s.interp_points = points;
    const auto along = [](int i, int j, int k) {
      return static_cast<float>(3 * std::sin(0.5 * i) + 2 * std::cos(0.7 * j) - std::sin(0.4 * k));
    };
    for (int axis = 0; axis < 3; ++axis)
      test::each_cell(gas.face(axis).dims(), 0, [&](int i, int j, int k) {
        const Vec3i p(i, j, k);
        gas.face(axis)(i, j, k) = along(p[axis], p[(axis + 1) % 3], p[(axis + 2) % 3]);
      });
    gas.fluid.advect_velocity();
    std::vector<float> u;
    test::each_cell({11, 11, 11}, 3, [&](int i, int j, int k) {
      u.push_back(gas.face(0)(i, j, k));
      EXPECT_NEAR(gas.face(1)(k, i, j), u.back(), 1e-4);
      EXPECT_NEAR(gas.face(2)(j, k, i), u.back(), 1e-4);
    });
    return u;
  };
  const std::vector<float> plain = moved(false, 3);
  EXPECT_NE(moved(true, 3), plain) << "the adaptive tracer";
  EXPECT_NE(moved(false, 4), plain) << "cubic sampling";
}

// In a uniform wind nothing happens but that the gas goes with it, in a box that goes along. The
// first frame of a wind meets a box that was made without it.
TEST(RunSettings, TheWindCarriesGasAndBox) {
  test::BoxRun run;
  double speed = 1;
  run.scene.domain = {48, 12, 12};
  run.scene.source = {{6, 4, 4}, {9, 7, 7}};
  run.scene.frames_of_source = 1;
  run.scene.object.amounts = {{kDensity, 1}};
  run.scene.settings = [&](SimSettings& s) { s.wind_speed = speed; };
  run.start();
  const auto mass_and_place = [&] {
    double mass = 0, moment = 0;
    const Field<float>& d = run.channel(kDensity);
    test::each_cell(d.dims(), 0, [&](int i, int j, int k) {
      mass += d(i, j, k);
      moment += d(i, j, k) * (i + run.sim.settings.active_box.lo[0] - 1);
    });
    return std::pair(mass, moment / mass);
  };
  for (const double cells : {0.8, 3.2}) {  // in a frame
    speed = cells * 0.05 / 0.04;
    run.frames(1);
    const auto [mass, place] = mass_and_place();
    run.frames(4);
    EXPECT_NEAR(mass_and_place().first, mass, 0.1 * mass) << "the tracer keeps it so far";
    EXPECT_NEAR(mass_and_place().second, place + 4 * cells, 0.1);
  }
  EXPECT_GT(run.sim.settings.active_box.lo[0], 9);
}

// A shear U = -a y^2 / 2 turns by a y about z, more and more along y. The confinement
// e dx (N x w) then points along x.
TEST(RunSettings, ConfinementHasTheStrengthOfItsFormula) {
  Gas gas({8, 12, 8});
  gas.s.vorticity = 0.7;
  const double a = 3, dx = gas.s.dx;
  const auto shear = [&](int j) { return static_cast<float>(-a * j * j * dx * dx / 2); };
  test::each_cell(gas.face(0).dims(), 0,
                  [&](int i, int j, int k) { gas.face(0)(i, j, k) = shear(j); });
  VorticitySystem(gas.s).add_forces(gas.fluid, gas.s.dt);
  EXPECT_NEAR(gas.face(0)(4, 6, 4) - shear(6), gas.s.dt * 0.7 * dx * a * 6 * dx, 2e-6);
  EXPECT_NEAR(gas.face(1)(4, 6, 4), 0, 1e-6);
}

TEST(RunSettings, NoiseIsSetBySizesAndStrength) {
  NoiseParams p;
  set_noise_scale(p, 8, 2, 1, 0.6, 4);
  EXPECT_EQ(p.frequency, 1 / 8.0f);
  EXPECT_EQ(p.bands, 3);
  EXPECT_FLOAT_EQ(p.amplitude, 0.6f * 8);
  EXPECT_EQ(p.time_frequency, 0.25f);
  set_noise_scale(p, 0.1, 0.5, 1, 1, 0);
  EXPECT_EQ(p.frequency, 1) << "no eddy is smaller than a voxel";
  EXPECT_EQ(p.bands, 1);
  EXPECT_EQ(p.time_frequency, 0);
}

// The noise alone: one band of eddies of 8 cells.
struct Noise : FieldSource {
  explicit Noise(const Vec3i& lo, float driven_by = -1) : gas({24, 24, 24}, lo) {
    set_noise_scale(gas.s.noise, 8, 8, 1, 0.6, 0);
    if (driven_by >= 0) {
      gas.s.noise.driver_key = kDensity;
      gas.s.noise.driver_spline.addPoint(0, 0, kLinearTangent, kLinearTangent);
      gas.s.noise.driver_spline.addPoint(1, driven_by, kLinearTangent, kLinearTangent);
      gas.s.noise.driver_spline.rebuild();
    }
    test::each_cell({26, 26, 26}, 0, [&](int i, int j, int k) {
      density.cpu_field()(i, j, k) = i < 12 ? 0.0f : 1.0f;
    });
    for (int axis = 0; axis < 3; ++axis) {
      gas.fluid.detail(axis).resize(kCpu, gas.face(axis).dims());
      gas.fluid.detail(axis).zero();
    }
    NoiseForceSystem system(gas.s);
    system.begin_frame(*this);
    system.add_detail(gas.fluid);
  }
  MField* get_field(int key) override { return key == kDensity ? &density : nullptr; }
  float u(int i, int j, int k) { return gas.fluid.detail(0).cpu_field()(i, j, k); }

  Gas gas;
  MField density{kCpu, {26, 26, 26}};
};

TEST(RunSettings, NoiseStandsInTheDomainAndFollowsItsDriver) {
  Noise plain({0, 0, 0}), shifted({3, 0, 0}), driven({0, 0, 0}, 0.5f);
  double squares = 0;
  int cells = 0;
  test::each_cell({22, 22, 22}, 4, [&](int i, int j, int k) {
    EXPECT_EQ(shifted.u(i, j, k), plain.u(i + 3, j, k));
    const float share = i < 11 ? 0 : i > 13 ? 0.5f : driven.u(i, j, k) / plain.u(i, j, k);
    EXPECT_NEAR(driven.u(i, j, k), share * plain.u(i, j, k), 1e-6);
    squares += plain.u(i, j, k) * plain.u(i, j, k);
    ++cells;
  });
  EXPECT_NEAR(std::sqrt(squares / cells), 0.6, 0.3) << "of the order of the strength";
}

}  // namespace
}  // namespace nbx
