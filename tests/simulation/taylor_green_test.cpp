// The vortex of Taylor and Green between walls, U = sin x cos y, V = -cos x sin y on [0, pi]^2, is
// at rest as a flow: advection and pressure balance, and without viscosity nothing changes. What a
// run changes is its own error.
#include <array>
#include <cmath>
#include <numbers>

#include "simulation/cusl_kernels3d.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/pressure_system.h"
#include "support/support.h"

namespace nbx {
namespace {

struct NoForce : VelocityForce {
  void add_forces(FluidSystem&, double) override {}
};
struct NoProgress : SolverProgress {
  bool abort_requested(int, int) override { return false; }
};

struct Outcome {
  double energy;  // over that at the start
  double error;   // root of the mean square of the change, where the largest speed is 1
};

// Energy and change after a time of 1, in a box of n x n x 4 cells.
Outcome run(int n) {
  SimSettings s;
  s.domain_box = s.active_box = {{0, 0, 0}, {n - 1, n - 1, 3}};
  s.face_closed = {1, 1, 1, 1, 1, 1};
  s.dx = std::numbers::pi / n;
  s.dt =
      s.dx / 2;  // a Courant number of a half, so that the error in time shrinks with that in space
  s.pressure_tolerance = 1e-4;
  s.max_cycles = 40;
  CuslKernels3D fluid(s);
  PressureSystem pressure(s);
  fluid.resize({0, 0, 0});
  std::array<Field<float>, 2> start;
  // Of a cell's centre; its low face is at (i - 1) dx.
  const auto x = [&](int i) { return (i - 0.5) * s.dx; };
  for (int axis = 0; axis < 2; ++axis) {
    Field<float>& f = fluid.component(axis).cpu_field();
    test::each_cell(f.dims(), 0, [&](int i, int j, int k) {
      f(i, j, k) = static_cast<float>(axis == 0 ? std::sin((i - 1) * s.dx) * std::cos(x(j))
                                                : -std::cos(x(i)) * std::sin((j - 1) * s.dx));
    });
    start[static_cast<std::size_t>(axis)].copy(f);
  }
  fluid.set_zero_velocity(false);

  NoForce none;
  NoProgress progress;
  for (int step = 0; step < std::lround(1 / s.dt); ++step) {
    fluid.advect_velocity();
    fluid.update(s.dt, pressure, none, progress);
  }
  // The projection ends with the boundary: another one changes nothing.
  for (int axis = 0; axis < 3; ++axis) {
    MField again;
    again.assign(fluid.component(axis));
    m_velocity_boundary(axis, again, s);
    EXPECT_TRUE(test::same_bits(again.cpu_field(), fluid.component(axis).cpu_field())) << axis;
  }
  double before = 0, after = 0, change = 0;
  int count = 0;
  for (int axis = 0; axis < 2; ++axis) {
    const Field<float>& f = fluid.component(axis).cpu_field();
    const Field<float>& f0 = start[static_cast<std::size_t>(axis)];
    for (int j = 1; j <= n; ++j)
      for (int i = 1; i <= n; ++i, ++count) {
        before += std::pow(f0(i, j, 2), 2);
        after += std::pow(f(i, j, 2), 2);
        change += std::pow(f(i, j, 2) - f0(i, j, 2), 2);
      }
  }
  return {after / before, std::sqrt(change / count)};
}

// Splitting advection from pressure is of first order in the step: half the cells' size, half the
// error.
TEST(TaylorGreen, StaysAsItIsUpToAnErrorThatShrinks) {
  Outcome coarse = run(16);
  EXPECT_LT(coarse.error, 0.1);
  for (int n : {32, 64}) {
    const Outcome fine = run(n);
    EXPECT_LT(fine.energy, 1);
    EXPECT_LT(1 - fine.energy, (1 - coarse.energy) / 1.8);
    EXPECT_LT(fine.error, coarse.error / 1.8);
    coarse = fine;
  }
}

}  // namespace
}  // namespace nbx
