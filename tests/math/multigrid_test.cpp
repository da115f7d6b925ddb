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
    kFloor{0, 0, 1, 0, 0, 0};

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
        fill_random(fast.x, 2);
        const SolveResult result = fast.cycles(2);
        EXPECT_EQ(result.cycles, 2);
        EXPECT_EQ(result.residual, expected);
        EXPECT_TRUE(test::same_bits(fast.x, plain.x));
        EXPECT_TRUE(test::same_bits(fast.b, plain.b)) << "b must come back";
      });
    }
}

// The mean factor by which ten V-cycles shrink the residual, before rounding limits it.
double factor(const Vec3i& size, const Faces& faces) {
  Problem p(size, faces);
  const double first = infnorm(p.b);
  double last = first;
  int cycles = 0;
  for (; cycles < 10 && last > 2e-5; ++cycles) last = static_cast<double>(p.cycles(1).residual);
  EXPECT_GT(cycles, 2);
  return std::pow(last / first, 1.0 / cycles);
}

TEST(Multigrid, VCyclesConverge) {
  for (const Vec3i& size :
       {Vec3i(7, 7, 7), Vec3i(8, 8, 8), Vec3i(32, 32, 32), Vec3i(63, 63, 63), Vec3i(64, 64, 64),
        Vec3i(127, 127, 127), Vec3i(128, 128, 128), Vec3i(100, 150, 77)}) {
    SCOPED_TRACE(testing::Message() << size[0] << " " << size[1] << " " << size[2]);
    EXPECT_LT(factor(size, kOpen), 0.1);
    // At a wall a sweep reads the ghost, a copy of the cell's old value, like a neighbor. That
    // slows the cell down, most of all on coarse levels.
    EXPECT_LT(factor(size, kFloor), 0.5);
    EXPECT_LT(factor(size, kMixed), 0.75);
    EXPECT_LT(factor(size, kClosed), 0.75);
  }
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
  Problem p({16, 20, 9}, kOpen), one({16, 20, 9}, kOpen);
  Stopper never(100);
  EXPECT_EQ(p.solver.solve(p.x, p.b, 2, 4, -1, &never).end, SolveEnd::kMaxCycles);
  EXPECT_EQ(never.largest_total, 4) << "an estimate that was too low grows";

  // Stopped in the second cycle: x is that of the first cycle.
  std::fill_n(p.x.data(), p.x.count(), 0.0f);
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
