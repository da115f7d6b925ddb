#include "simulation/project.h"

#include <limits>
#include <tuple>

#include "math/field_pool.h"
#include "math/field_reductions.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/mac.h"
#include "util/exception.h"

namespace nbx {
namespace {

// A box with a random velocity of about `speed` on its inner faces.
struct Box : test::Mac {
  Vec3i n;
  test::Mac ball;
  Field<float> phi, source;
  SimSettings settings;
  MultigridSolver3D solver;

  Box(const Vec3i& interior, const std::array<int, 6>& faces, float speed = 1)
      : Mac(interior + Vec3i(2, 2, 2)), n(interior + Vec3i(2, 2, 2)), ball(n) {
    randomize(1, speed);
    settings.domain_box = settings.active_box = {{0, 0, 0}, interior - Vec3i(1, 1, 1)};
    settings.face_closed = faces;
    settings.dx = 0.5;
    settings.max_cycles = 60;
  }
  SolveResult run() {
    ProjectionFields f;
    f.U = &U;
    f.V = &V;
    f.W = &W;
    if (phi.count() > 0) {
      f.phi = &phi;
      f.Us = &ball.U;
      f.Vs = &ball.V;
      f.Ws = &ball.W;
    }
    f.source = source.count() > 0 ? &source : nullptr;
    return project(solver, f, settings, closed_faces(settings), 5, nullptr);
  }
  // The largest of |-div + source| in fluid.
  float divergence() {
    Field<float> rhs(n[0], n[1], n[2]);
    NegDivergence(rhs, U, V, W, phi.count() > 0 ? &phi : nullptr, 1 / settings.dx);
    if (source.count() > 0) axpy(rhs, 1, source, rhs);
    return infnorm(rhs);
  }
  // A ball of radius 5 in the middle, that moves with 0.25 along y.
  void add_ball() {
    phi.resize(n);
    test::each_cell(n, 0, [&](int i, int j, int k) {
      const double r = std::hypot(i - n[0] / 2, j - n[1] / 2, k - n[2] / 2);
      const float d = static_cast<float>(r) - 5;
      phi(i, j, k) = d * std::abs(d);
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

// A puff that is blown upwards above the floor, with the cycles and the tolerance of a run. Among
// side walls these cycles don't reach the tolerance. There the bound is what they reach today,
// 0.117, and a tenth more.
TEST(Project, APuffBehindWallsWithTheSettingsOfARun) {
  const struct {
    std::array<int, 6> faces;
    float most;
  } cases[] = {{{}, 0.01f},
               {{0, 0, 1, 0, 0, 0}, 0.01f},
               {{1, 1, 1, 0, 1, 1}, 0.13f},
               {{1, 1, 1, 1, 1, 1}, 0.13f}};
  for (const auto& c : cases) {
    Box box({48, 64, 48}, c.faces);
    box.zero();
    test::each_cell(box.V.dims(), 1, [&](int i, int j, int k) {
      const double r = std::hypot(i - 24.5, j - 13, k - 24.5) / 6;
      box.V(i, j, k) = 2 * static_cast<float>(std::exp(-r * r));
    });
    box.settings.dx = 0.05;
    box.settings.max_cycles = SimSettings().max_cycles;
    ASSERT_GT(box.divergence(), 5);
    std::ignore = box.run();
    EXPECT_LT(box.divergence(), c.most + 1e-4f);
  }
}

TEST(Project, FacesOfSolidsHoldTheirVelocity) {
  // The passes round the ball end at the tolerance. What they leave, the last solve takes away with
  // a pressure that doesn't see the ball, so the faces move by what the tolerance allows.
  const auto slip_at = [](const std::array<int, 6>& faces, double tolerance, int passes) {
    Box box({33, 24, 30}, faces, 0.1f);
    box.add_ball();
    box.settings.pressure_tolerance = tolerance;
    box.settings.solid_iterations = passes;
    EXPECT_EQ(box.run().end, SolveEnd::kConverged);
    EXPECT_LT(box.divergence(), tolerance + 1e-5);
    return box.slip();
  };
  EXPECT_GT(slip_at({}, 0.01, 0), 0.1f) << "without the passes";
  EXPECT_LT(slip_at({}, 0.01, 10), 0.025f);
  EXPECT_LT(slip_at({}, 1e-4, 1000), 0.0012f);
  // Walls hold in every pass, or the last solve would push what flows against them into the ball.
  EXPECT_LT(slip_at({1, 0, 1, 1, 0, 1}, 1e-4, 1000), 0.0012f);
}

TEST(Project, FailuresGiveEverythingBack) {
  const auto in_use = field_pool().counts().in_use;
  Box box({8, 8, 8}, {});
  box.V(4, 4, 4) = std::numeric_limits<float>::quiet_NaN();
  try {
    std::ignore = box.run();
    FAIL() << "no exception";
  } catch (const Exception& e) {
    EXPECT_STREQ(e.what(), "Floating point error during linear solving");
  }
  EXPECT_EQ(field_pool().counts().in_use, in_use);
  EXPECT_EQ(box.solver.level_count(), 0);
}

}  // namespace
}  // namespace nbx
