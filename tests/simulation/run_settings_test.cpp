// What each setting of a run does to the velocity, compared with formulas.
#include "math/field_operators.h"
#include "math/field_reductions.h"
#include "simulation/scene_run.h"

namespace nbx {
namespace {

// Gas that fills a box of n cells of 0.05 units, in the middle of a frame of two substeps.
struct Gas : test::Records {
  explicit Gas(const Vec3i& n, const Vec3i& lo = {}) {
    domain.active_box = domain.domain_box = {lo, lo + n - Vec3i(1, 1, 1)};
    domain.dx = 0.05;
    clock.dt = 0.02;
    clock.frame_duration = 0.04;
    clock.sim_time.length = {1, 25};
    fluid.resize({});
    fluid.set_zero_velocity(false);
  }
  Field<float>& face(int axis) { return fluid.component(axis).write_cpu(); }

  CuslKernels3D fluid{view};
};

// Sets the speed of the gas; keeps the one before it, and the one that the projection gets.
struct Push : VelocityForce, SolverProgress {
  void add_forces(FluidSystem& fluid, double) override {
    gas = &fluid;
    before = infnorm(fluid.U().read_cpu());
    for (int axis = 0; axis < 3; ++axis) set(fluid.component(axis).overwrite_cpu(), 1000);
  }
  bool add_divergence(MField&, double) override {
    for (int axis = 0; axis < 3; ++axis) after[axis] = infnorm(gas->component(axis).read_cpu());
    return false;
  }
  bool abort_requested(int, int) override { return false; }

  FluidSystem* gas = nullptr;
  float before = 0;
  Vec3f after;
};

TEST(RunSettings, DragIsPerFrameAndTheClampIsTheLengthOfTheGrid) {
  for (const bool clamp : {false, true}) {
    Gas gas({4, 6, 8});
    gas.params.drag = 0.36;
    gas.params.clamp_velocity = clamp;
    set(gas.face(0), 1);
    Push push;
    PressureSystem pressure(gas.view);
    gas.fluid.update(gas.clock.dt, pressure, push, push);
    EXPECT_NEAR(push.before, 0.8, 1e-6) << "half a frame: the root of what a frame leaves";
    EXPECT_EQ(push.after, clamp ? Vec3f(7.5f, 10, 12.5f) : Vec3f(1000, 1000, 1000));
  }
}

TEST(RunSettings, TheCflNumberLimitsTheStep) {
  Gas gas({4, 4, 4});
  gas.params.cfl = 1.5;
  set(gas.face(0), 3);
  set(gas.face(1), -4);
  EXPECT_DOUBLE_EQ(gas.fluid.max_step(), 1.5 * 0.05 / 5);
}

// A velocity that is symmetric in its axes. It would lose the symmetry if one component changed
// while the others still move along it.
TEST(RunSettings, ComponentsMoveAlongOneVelocity) {
  const auto moved = [](bool adaptive, int points) {
    Gas gas({12, 12, 12});
    gas.params.adaptive_tracer = adaptive;
    gas.params.interp_points = points;
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

// In a uniform wind, gas and box move along with it and nothing else happens. In its first frame
// the box is still that of the frame before.
TEST(RunSettings, TheWindCarriesGasAndBox) {
  test::BoxRun run;
  double speed = 1;
  run.scene.cells = {48, 12, 12};
  run.scene.source = {{6, 4, 4}, {9, 7, 7}};
  run.scene.frames_of_source = 1;
  run.scene.object.amounts = {{kDensity, 1}};
  run.scene.settings = [&](StepSettings& s) { s.domain.wind.speed = speed; };
  run.start();
  const auto mass_and_place = [&] {
    double mass = 0, moment = 0;
    const Field<float>& d = run.channel(kDensity);
    test::each_cell(d.dims(), 0, [&](int i, int j, int k) {
      mass += d(i, j, k);
      moment += d(i, j, k) * (i + run.sim.domain.origin()[0]);
    });
    return std::pair(mass, moment / mass);
  };
  for (const double cells : {0.8, 3.2}) {  // in a frame
    speed = cells * 0.05 / 0.04;
    run.frames(1);
    const auto [mass, place] = mass_and_place();
    run.frames(4);
    EXPECT_NEAR(mass_and_place().first, mass, 0.1 * mass) << "the tracer is accurate to that";
    EXPECT_NEAR(mass_and_place().second, place + 4 * cells, 0.1);
  }
  EXPECT_GT(run.sim.domain.active_box.lo[0], 9);
}

// A shear U = -a y^2 / 2 has the vorticity a y about z, which grows along y. So the confinement
// e dx (N x w) points along x.
TEST(RunSettings, ConfinementHasTheStrengthOfItsFormula) {
  Gas gas({8, 12, 8});
  gas.params.vorticity = 0.7;
  const double a = 3, dx = gas.domain.dx;
  const auto shear = [&](int j) { return static_cast<float>(-a * j * j * dx * dx / 2); };
  test::each_cell(gas.face(0).dims(), 0,
                  [&](int i, int j, int k) { gas.face(0)(i, j, k) = shear(j); });
  VorticitySystem(gas.view).add_forces(gas.fluid, gas.clock.dt);
  EXPECT_NEAR(gas.face(0)(4, 6, 4) - shear(6), gas.clock.dt * 0.7 * dx * a * 6 * dx, 2e-6);
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
    set_noise_scale(gas.params.noise, 8, 8, 1, 0.6, 0);
    if (driven_by >= 0) {
      gas.params.noise.driver_key = kDensity;
      gas.params.noise.driver_spline.addPoint(0, 0, kLinearTangent, kLinearTangent);
      gas.params.noise.driver_spline.addPoint(1, driven_by, kLinearTangent, kLinearTangent);
      gas.params.noise.driver_spline.rebuild();
    }
    test::each_cell({26, 26, 26}, 0, [&](int i, int j, int k) {
      density.write_cpu()(i, j, k) = i < 12 ? 0.0f : 1.0f;
    });
    for (int axis = 0; axis < 3; ++axis) {
      gas.fluid.detail(axis).resize(kCpu, gas.face(axis).dims());
      gas.fluid.detail(axis).zero();
    }
    NoiseForceSystem system(gas.view);
    system.begin_frame(*this);
    system.add_detail(gas.fluid);
  }
  MField* get_field(int key) override { return key == kDensity ? &density : nullptr; }
  float u(int i, int j, int k) { return gas.fluid.detail(0).read_cpu()(i, j, k); }

  Gas gas;
  MField density{kCpu, {26, 26, 26}};
};

TEST(RunSettings, NoiseRestsInTheDomainAndFollowsItsDriver) {
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
