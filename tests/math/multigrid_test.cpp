#include <functional>
#include <limits>

#include "math/field_reductions.h"
#include "math/multigrid_solver3d.h"
#include "support/support.h"
#include "tests/math/plain_multigrid.h"

namespace nbx {
namespace {

using test::fill_random;
using Faces = std::array<int, 6>;
constexpr Faces kOpen{}, kClosed{1, 1, 1, 1, 1, 1}, kMixed{1, 0, 0, 1, 0, 1},
    kFloor{0, 0, 1, 0, 0, 0}, kShaft{1, 1, 1, 0, 1, 1};

// A solver with its fields: a random right-hand side in the interior, x = 0.
struct Problem {
  Field<float> x, b, r0, buffer;
  MultigridSolver3D solver;

  Problem(const Vec3i& interior, const Faces& faces, unsigned seed = 1) {
    const Vec3i n = interior + Vec3i(2, 2, 2);
    for (Field<float>* f : {&x, &b, &r0}) {
      f->resize(n);
      std::fill_n(f->data(), f->count(), 0.0f);
    }
    std::mt19937 engine(seed);
    std::uniform_real_distribution<float> value(-1, 1);
    double mean = 0;
    for_interior([&](float& v) { mean += static_cast<double>(v = value(engine)); });
    mean /= interior[0] * interior[1] * static_cast<double>(interior[2]);
    // With walls on all sides only a right-hand side that sums to zero has a solution.
    if (faces == kClosed) for_interior([&](float& v) { v -= static_cast<float>(mean); });
    solver.bc = faces;
    solver.setup(n[0], n[1], n[2], r0, buffer);
  }

  template <class Body>
  void for_interior(Body body) {
    test::each_cell(b.dims(), 1, [&](int i, int j, int k) { body(b(i, j, k)); });
  }
  SolveResult cycles(int n) { return solver.solve(x, b, n, n, -1, nullptr); }
};

TEST(Multigrid, EqualsThePlainFormBitForBit) {
  const Vec3i sizes[] = {{1, 1, 1}, {2, 2, 2},   {3, 3, 3},    {1, 4, 9},    {6, 1, 2},
                         {7, 8, 1}, {5, 12, 17}, {44, 43, 40}, {25, 26, 83}, {128, 31, 20}};
  for (const Vec3i& size : sizes)
    for (const Faces& faces : {kOpen, kClosed, kMixed}) {
      SCOPED_TRACE(testing::Message() << size[0] << " " << size[1] << " " << size[2] << " faces "
                                      << faces[0] << faces[1]);
      Problem plain(size, faces);
      fill_random(plain.x, 2);  // a first guess, and ghosts without meaning
      const float expected = test::PlainMultigrid(plain.x.dims(), faces).solve(plain.x, plain.b, 2);
      test::everywhere([&] {
        Problem fast(size, faces);
        fast.solver.plain = true;
        fill_random(fast.x, 2);
        const SolveResult result = fast.cycles(2);
        EXPECT_EQ(result.cycles, 2);
        EXPECT_EQ(result.residual, expected);
        EXPECT_TRUE(test::same_bits(fast.x, plain.x));
      });
    }
}

// The mean factor by which ten cycles shrink the residual, before rounding limits it. `solid` says
// which cells are in solid, if any.
using Solid = std::function<bool(int, int, int)>;
double factor(const Vec3i& size, const Faces& faces, const Solid& solid = nullptr) {
  Problem p(size, faces);
  if (solid) {
    const Field<float> phi = test::field_of(
        p.x.dims(), [&](int i, int j, int k) { return solid(i, j, k) ? -1.0f : 1.0f; });
    double mean = 0;
    int cells = 0;
    test::each_cell(p.x.dims(), 1, [&](int i, int j, int k) {
      if (phi(i, j, k) <= 0) p.b(i, j, k) = 0;
      mean += static_cast<double>(p.b(i, j, k));
      cells += phi(i, j, k) > 0;
    });
    test::each_cell(p.x.dims(), 1, [&](int i, int j, int k) {
      if (faces == kClosed && phi(i, j, k) > 0) p.b(i, j, k) -= static_cast<float>(mean / cells);
    });
    p.solver.set_solids(phi);
  }
  const float first = infnorm(p.b);
  const SolveResult result = p.solver.solve(p.x, p.b, 10, 10, 2e-5f * first, nullptr);
  EXPECT_GT(result.cycles, 2);
  return std::pow(static_cast<double>(result.residual / first), 1.0 / result.cycles);
}

TEST(Multigrid, CyclesConverge) {
  for (const Vec3i& size :
       {Vec3i(7, 7, 7), Vec3i(8, 8, 8), Vec3i(32, 32, 32), Vec3i(63, 63, 63), Vec3i(64, 64, 64),
        Vec3i(127, 127, 127), Vec3i(128, 128, 128), Vec3i(100, 150, 77), Vec3i(64, 64, 1),
        Vec3i(64, 1, 64), Vec3i(1, 64, 64), Vec3i(64, 64, 2), Vec3i(64, 64, 3), Vec3i(64, 64, 5),
        Vec3i(64, 64, 8), Vec3i(16, 16, 256)}) {
    SCOPED_TRACE(testing::Message() << size[0] << " " << size[1] << " " << size[2]);
    EXPECT_LT(factor(size, kOpen), 0.1);
    EXPECT_LT(factor(size, kFloor), 0.2);
    EXPECT_LT(factor(size, kMixed), 0.2);
    EXPECT_LT(factor(size, kShaft), 0.2);
    EXPECT_LT(factor(size, kClosed), 0.2);
  }
}

// A ball, and a wall of one voxel that leaves a gap. The wall lies between the cells of the coarser
// levels or on them.
TEST(Multigrid, CyclesConvergeAroundSolids) {
  for (const Vec3i& size : {Vec3i(63, 63, 63), Vec3i(64, 64, 64), Vec3i(100, 75, 38)}) {
    SCOPED_TRACE(testing::Message() << size[0] << " " << size[1] << " " << size[2]);
    const auto ball = [&](int i, int j, int k) {
      return std::hypot(i - size[0] * 0.5, j - size[1] * 0.7, k - size[2] * 0.5) < size[2] * 0.15;
    };
    const auto wall = [&](int at) {
      return [=](int i, int j, int) { return i == at && j < size[1] * 0.7; };
    };
    for (const Faces& faces : {kOpen, kFloor, kMixed, kShaft, kClosed}) {
      EXPECT_LT(factor(size, faces, ball), 0.2);
      // A wall and a closed box leave two rooms with a narrow passage: the flow through it is what
      // converges last.
      const double limit = faces == kShaft || faces == kClosed ? 0.5 : 0.2;
      EXPECT_LT(factor(size, faces, wall(size[0] / 2)), limit);
      EXPECT_LT(factor(size, faces, wall(size[0] / 2 + 1)), limit);
    }
  }
}

// Around solids x solves the problem of the fluid alone: fluxes through faces next to solid are
// left out, and x is 0 in solid.
TEST(Multigrid, SolidsHaveNoPressureGradient) {
  Problem p({13, 10, 9}, kMixed);
  const Field<float> phi = test::field_of(p.x.dims(), [](int i, int j, int k) {
    return (i == 6 && j < 8) || (i > 9 && j > 6 && k > 3) ? -1.0f : 1.0f;
  });
  const auto fluid = [&](int i, int j, int k) { return phi(i, j, k) > 0; };
  test::each_cell(p.x.dims(), 1, [&](int i, int j, int k) {
    if (!fluid(i, j, k)) p.b(i, j, k) = 0;
  });
  Field<float> b;
  b.copy(p.b);
  p.solver.set_solids(phi);
  EXPECT_EQ(p.solver.solve(p.x, p.b, 20, 20, 1e-4f, nullptr).end, SolveEnd::kConverged);
  const Vec3i n = p.x.dims();
  int checked = 0;
  test::each_cell(n, 1, [&](int i, int j, int k) {
    if (!fluid(i, j, k)) {
      EXPECT_EQ(p.x(i, j, k), 0);
      return;
    }
    double Ax = 0;
    for (int face = 0; face < 6; ++face) {
      Vec3i at(i, j, k);
      at[face / 2] += face % 2 ? 1 : -1;
      const bool ghost = at[face / 2] == 0 || at[face / 2] == n[face / 2] - 1;
      if (ghost ? kMixed[static_cast<std::size_t>(face)] == 1 : !fluid(at[0], at[1], at[2]))
        continue;
      Ax += double(p.x(i, j, k)) - (ghost ? 0 : double(p.x(at[0], at[1], at[2])));
    }
    EXPECT_NEAR(Ax, double(b(i, j, k)), 1.1e-4);
    ++checked;
  });
  EXPECT_GT(checked, 800);
}

TEST(Multigrid, EndsOfASolve) {
  Problem p({20, 9, 14}, kMixed);
  Field<float> zero = test::field_of(p.x.dims(), [](int, int, int) { return 0; });
  fill_random(p.x, 3);
  SolveResult result = p.solver.solve(p.x, zero, 1, 5, 0, nullptr);
  EXPECT_EQ(result.cycles, 0);
  EXPECT_EQ(result.end, SolveEnd::kConverged);
  EXPECT_TRUE(test::same_bits(p.x, zero)) << "nothing drives it, so nothing is left";
  fill_random(p.x, 3);
  result = p.solver.solve(p.x, p.b, 1, 0, 0, nullptr);
  EXPECT_EQ(result.end, SolveEnd::kMaxCycles);
  EXPECT_EQ(result.residual, infnorm(p.b));
  EXPECT_TRUE(test::same_bits(p.x, zero)) << "no cycle, no solution";

  result = p.solver.solve(p.x, p.b, 1, 1, 0, nullptr);
  EXPECT_EQ(result.cycles, 1);
  EXPECT_EQ(result.end, SolveEnd::kMaxCycles);

  const float tolerance = result.residual / 100;
  result = p.solver.solve(p.x, p.b, 1, 100, tolerance, nullptr);
  EXPECT_EQ(result.end, SolveEnd::kConverged);
  EXPECT_LE(result.residual, tolerance);
  EXPECT_LT(result.cycles, 30);

  p.b(3, 3, 3) = std::numeric_limits<float>::quiet_NaN();
  EXPECT_TRUE(std::isnan(p.cycles(2).residual));
  Field<float> other(p.x.nx(), p.x.nz(), p.x.ny());
  EXPECT_THROW(std::ignore = p.solver.solve(other, p.b, 1, 1, 0, nullptr), int);
}

TEST(Multigrid, ThreeRisesEndASolve) {
  // With walls on all sides a source without a sink has no solution: the residual grows to a limit.
  Problem p({16, 16, 16}, kClosed);
  p.solver.plain = true;
  p.for_interior([](float& v) { v = 1; });
  const SolveResult result = p.cycles(20);
  EXPECT_EQ(result.end, SolveEnd::kDiverging);
  EXPECT_EQ(result.cycles, 3);
}

// Counts its calls, and stops after `cycles` cycles.
struct Stopper : SolverProgress {
  int cycles, largest_total = 0;
  explicit Stopper(int n) : cycles(n) {}
  bool abort_requested(int done, int total) override {
    largest_total = std::max(largest_total, total);
    return done >= cycles;
  }
};

TEST(Multigrid, TheUserCanStopASolve) {
  const Vec3i size(16, 20, 9);
  Problem all(size, kOpen), p(size, kOpen), one(size, kOpen);
  Stopper never(100);
  EXPECT_EQ(all.solver.solve(all.x, all.b, 2, 4, -1, &never).end, SolveEnd::kMaxCycles);
  EXPECT_EQ(never.largest_total, 4) << "an estimate that was too low grows";

  // Stopped in the second cycle: x is that of the first cycle.
  Stopper second(1);
  const SolveResult result = p.solver.solve(p.x, p.b, 7, 4, -1, &second);
  EXPECT_EQ(result.end, SolveEnd::kAborted);
  EXPECT_EQ(result.cycles, 1);
  EXPECT_EQ(result.residual, one.cycles(1).residual);
  EXPECT_TRUE(test::same_bits(p.x, one.x));

  Stopper first(0);
  EXPECT_EQ(p.solver.solve(p.x, p.b, 7, 4, -1, &first).end, SolveEnd::kAborted);
  EXPECT_EQ(infnorm(p.x), 0) << "half a cycle is no solution";
}

}  // namespace
}  // namespace nbx
