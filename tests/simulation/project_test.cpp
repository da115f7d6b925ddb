#include "simulation/fluid/project.h"

#include <limits>
#include <numbers>

#include "math/field_pool.h"
#include "math/field_reductions.h"
#include "simulation/cusl_kernels3d.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/mac.h"
#include "simulation/records.h"
#include "simulation/steps/pressure_system.h"
#include "util/exception.h"

namespace nbx {
namespace {

// A box with a random velocity of about `speed` on its inner faces.
struct Box : test::Mac {
  Vec3i n;
  test::Mac ball;
  Field<float> phi, source;
  Domain domain;
  ProjectionLimits limits;
  MultigridSolver3D solver;

  Box(const Vec3i& interior, const std::array<int, 6>& faces, float speed = 1)
      : Mac(interior + Vec3i(2, 2, 2)), n(interior + Vec3i(2, 2, 2)), ball(n) {
    randomize(1, speed);
    domain.domain_box = domain.active_box = {{0, 0, 0}, interior - Vec3i(1, 1, 1)};
    domain.face_closed = faces;
    domain.dx = 0.5;
  }
  Projection run() {
    ProjectionFields f{&U, &V, &W};
    if (phi.count() > 0) f = {&U, &V, &W, &phi, nullptr, &ball.U, &ball.V, &ball.W};
    f.source = source.count() > 0 ? &source : nullptr;
    return project(solver, f, domain, limits, 5, nullptr);
  }
  // The largest of |-div + source| in fluid.
  float divergence() {
    double worst = 0;
    test::each_cell(n, 1, [&](int i, int j, int k) {
      if (phi.count() > 0 && phi(i, j, k) <= 0) return;
      const double du = double(U(i + 1, j, k)) - double(U(i, j, k));
      const double dv = double(V(i, j + 1, k)) - double(V(i, j, k));
      const double dw = double(W(i, j, k + 1)) - double(W(i, j, k));
      const double given = source.count() > 0 ? double(source(i, j, k)) : 0;
      worst = std::max(worst, std::abs(given - (du + dv + dw) / domain.dx));
    });
    return static_cast<float>(worst);
  }
  // A ball of radius 5 in the middle, that moves with 0.25 along y.
  void add_ball() {
    phi = test::field_of(n, [&](int i, int j, int k) {
      const double d = std::hypot(i - n[0] / 2, j - n[1] / 2, k - n[2] / 2) - 5;
      return d * std::abs(d);
    });
    set(ball.V, 0.25f);
  }
  // The largest deviation from the ball's velocity on its faces.
  float slip() {
    float worst = 0;
    for (int axis = 0; axis < 3; ++axis)
      test::each_cell(n, 1, [&](int i, int j, int k) {
        if (phi(i, j, k) <= 0 || phi(i - (axis == 0), j - (axis == 1), k - (axis == 2)) <= 0)
          worst = std::max(worst, std::abs(face(axis)(i, j, k) - ball.face(axis)(i, j, k)));
      });
    return worst;
  }
};

TEST(Project, LeavesNoDivergence) {
  for (const Vec3i& size : {Vec3i(1, 1, 1), Vec3i(31, 32, 17), Vec3i(40, 1, 25)})
    for (const std::array<int, 6>& faces :
         {std::array<int, 6>{}, {1, 1, 1, 1, 1, 1}, {1, 0, 1, 1, 0, 0}}) {
      SCOPED_TRACE(testing::Message()
                   << size[0] << " " << size[1] << " faces " << faces[0] << faces[1]);
      Box box(size, faces);
      ASSERT_GT(box.divergence(), 1);
      if (faces[0] == 0) {
        box.source.resize(box.n);
        set(box.source, 0);
        box.source(1, 1, 1) = 3;
      }
      const SolveResult result = box.run();
      EXPECT_EQ(result.end, SolveEnd::kConverged);
      // The faces are stored as floats: their rounding over dx comes on top.
      EXPECT_LT(box.divergence(), 0.01f + 1e-5f);
      EXPECT_NEAR(box.divergence(), result.residual, 1e-5f);
    }
}

TEST(Project, FacesOfSolidsHoldTheirVelocity) {
  // The passes around the ball end at the tolerance. The final solve removes the rest with a
  // pressure that ignores the ball, so its faces change by up to the tolerance.
  const auto slip_at = [](const std::array<int, 6>& faces, double tolerance, int passes) {
    Box box({33, 24, 30}, faces, 0.1f);
    box.add_ball();
    box.limits.tolerance = tolerance;
    box.limits.solid_iterations = passes;
    EXPECT_EQ(box.run().end, SolveEnd::kConverged);
    EXPECT_LT(box.divergence(), tolerance + 1e-5);
    return box.slip();
  };
  EXPECT_GT(slip_at({}, 0.01, 0), 0.1f) << "without the passes";
  test::everywhere([&] { EXPECT_LT(slip_at({}, 0.01, 10), 0.025f); });
  EXPECT_LT(slip_at({}, 1e-4, 1000), 0.0012f);
  // Walls hold in every pass. Else the final solve would push into the ball what flows against
  // them.
  EXPECT_LT(slip_at({1, 0, 1, 1, 0, 1}, 1e-4, 1000), 0.0012f);
}

// Around a ball, and a wall of one voxel, that move: the divergence in the gas is below the
// tolerance within the iterations of a run, and the faces of the solids have moved by no more than
// that.
TEST(Project, ConvergesAroundMovingSolids) {
  for (const std::array<int, 6>& faces :
       {std::array<int, 6>{}, {0, 0, 1, 0, 0, 0}, {1, 0, 1, 1, 0, 1}, {1, 1, 1, 1, 1, 1}})
    for (const bool wall : {false, true}) {
      SCOPED_TRACE(testing::Message() << faces[0] << faces[1] << " wall " << wall);
      Box box({40, 33, 36}, faces);
      box.add_ball();
      if (wall)
        test::each_cell(box.n, 1, [&](int i, int j, int k) {
          box.phi(i, j, k) = i == 20 && j > 3 && j < 25 ? -0.25f : 1.0f;
        });
      const Projection result = box.run();
      EXPECT_GT(result.solid_passes, 1);
      EXPECT_LE(result.solid_passes, 10);
      EXPECT_EQ(result.end, SolveEnd::kConverged);
      EXPECT_LT(box.divergence(), 0.01f + 1e-4f);
      EXPECT_LT(box.slip(), 0.011f);
    }
}

// Expansion in a closed room has no solution; the rest of the flow has.
TEST(Project, GasWithoutAWayOutIsCounted) {
  // A shell of one voxel around a room of 7^3 voxels, and another room outside of it.
  const auto shell = [](int i, int j, int k) {
    const int d = std::max({std::abs(i - 12), std::abs(j - 12), std::abs(k - 12)});
    return d == 4;
  };
  for (const bool closed : {false, true})
    for (const bool with_shell : {false, true}) {
      SCOPED_TRACE(testing::Message() << "closed " << closed << " shell " << with_shell);
      std::array<int, 6> faces;
      faces.fill(closed);
      Box box({24, 24, 24}, faces);
      if (with_shell) {
        box.add_ball();
        set(box.ball.V, 0);
        box.phi = test::field_of(
            box.n, [&](int i, int j, int k) { return shell(i, j, k) ? -0.25f : 1.0f; });
      }
      box.source.resize(box.n);
      set(box.source, 0);
      box.source(12, 12, 12) = 343;  // one per second and voxel of the inner room
      box.source(3, 3, 3) = -50;
      const float in_shell = with_shell ? 500 : 0;  // pushed out through the shell
      box.source(8, 12, 12) += in_shell;
      const Projection result = box.run();
      EXPECT_EQ(result.end, SolveEnd::kConverged);
      const double inner = with_shell ? 343 : 0, outer = closed ? with_shell ? -50 : 293 : 0;
      const auto divergence = [&](int i, int j, int k) {
        return (double(box.U(i + 1, j, k)) - double(box.U(i, j, k)) + double(box.V(i, j + 1, k)) -
                double(box.V(i, j, k)) + double(box.W(i, j, k + 1)) - double(box.W(i, j, k))) /
               box.domain.dx;
      };
      EXPECT_NEAR(result.confined, inner + outer, 0.02);
      // All of the room makes way evenly: -343 over 343 voxels.
      if (!with_shell) continue;
      EXPECT_LT(result.solid_passes, 10) << "what expands in solid isn't for this solve";
      // With walls on all sides the whole box makes way for what comes from the shell.
      const double all = closed ? in_shell / std::pow(24, 3) : 0;
      EXPECT_NEAR(divergence(14, 12, 12), -1 - all, 0.015);
      EXPECT_NEAR(divergence(8, 12, 12), in_shell - all, 0.015);
    }
}

TEST(Project, FailuresGiveEverythingBack) {
  const auto in_use = field_pool().counts().in_use;
  Box box({8, 8, 8}, {});
  box.V(4, 4, 4) = std::numeric_limits<float>::quiet_NaN();
  EXPECT_THROW(std::ignore = box.run(), Exception);
  EXPECT_EQ(field_pool().counts().in_use, in_use);
  EXPECT_EQ(box.solver.level_count(), 0);
}

// The vortex of Taylor and Green between walls, U = sin x cos y, V = -cos x sin y on [0, pi]^2, is
// a steady flow: advection and pressure balance, and there is no viscosity. All change is error.
struct Nothing : VelocityForce, SolverProgress {
  void add_forces(FluidSystem&, double) override {}
  bool abort_requested(int, int) override { return false; }
};

struct VortexChange {
  double energy;  // relative to the start
  double error;   // root of the mean square of the change, where the largest speed is 1
};

// Energy and change after a time of 1, in a box of n x n x 4 cells.
VortexChange run(int n) {
  test::Records s;
  s.domain.domain_box = s.domain.active_box = {{0, 0, 0}, {n - 1, n - 1, 3}};
  s.domain.face_closed = {1, 1, 1, 1, 1, 1};
  const double dx = s.domain.dx = std::numbers::pi / n;
  const double dt = s.clock.dt = dx / 2;  // so that the error in time shrinks with that in space
  s.params.pressure_tolerance = 1e-4;
  s.params.max_cycles = 40;
  CuslKernels3D fluid(s.view);
  PressureSystem pressure(s.view);
  fluid.resize({0, 0, 0});
  // The low face of cell i is at (i - 1) dx, its center at (i - 0.5) dx.
  const auto start = [&](int axis, int i, int j) {
    const double c = (axis == 0 ? j - 0.5 : i - 0.5) * dx, f = ((axis == 0 ? i : j) - 1) * dx;
    return static_cast<float>((axis == 0 ? 1 : -1) * std::sin(f) * std::cos(c));
  };
  for (int axis = 0; axis < 2; ++axis) {
    Field<float>& f = fluid.component(axis).write_cpu();
    test::each_cell(f.dims(), 0, [&](int i, int j, int k) { f(i, j, k) = start(axis, i, j); });
  }
  fluid.set_zero_velocity(false);

  Nothing none;
  for (int step = 0; step < std::lround(1 / dt); ++step) {
    fluid.advect_velocity();
    fluid.update(dt, pressure, none, none);
  }
  // The projection has applied the boundary: applying it again changes nothing.
  for (int axis = 0; axis < 3; ++axis) {
    MField again;
    again.assign(fluid.component(axis));
    m_velocity_boundary(axis, again, s.domain);
    EXPECT_TRUE(test::same_bits(again.read_cpu(), fluid.component(axis).read_cpu())) << axis;
  }
  double before = 0, after = 0, change = 0;
  int count = 0;
  for (int axis = 0; axis < 2; ++axis) {
    const Field<float>& f = fluid.component(axis).read_cpu();
    for (int j = 1; j <= n; ++j)
      for (int i = 1; i <= n; ++i, ++count) {
        const float f0 = start(axis, i, j);
        before += std::pow(f0, 2);
        after += std::pow(f(i, j, 2), 2);
        change += std::pow(f(i, j, 2) - f0, 2);
      }
  }
  return {after / before, std::sqrt(change / count)};
}

// Operator splitting is of first order: half the size of the cells, half the error.
TEST(TaylorGreen, StaysAsItIsUpToAnErrorThatShrinks) {
  VortexChange coarse = run(16);
  EXPECT_LT(coarse.error, 0.1);
  for (int n : {32, 64}) {
    const VortexChange fine = run(n);
    EXPECT_LT(fine.energy, 1);
    EXPECT_LT(1 - fine.energy, (1 - coarse.energy) / 1.8);
    EXPECT_LT(fine.error, coarse.error / 1.8);
    coarse = fine;
  }
}

}  // namespace
}  // namespace nbx
