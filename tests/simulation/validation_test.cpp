// Short runs of the cases that nimbrix_physics holds against theory.
#include <cmath>

#include <gtest/gtest.h>

#include "bench/physics/cases.h"

namespace nbx::physics {
namespace {

// What a steady vortex loses has two parts: of first order in the step by the splitting of the
// operators, and of second order in the size of the cells. So half the cells and half the step
// halve the loss at least; half the step alone leaves between a half and all of it.
TEST(Validation, SteadyVortexLosesLessOnFinerGrids) {
  for (const int points : {3, 4}) {
    const double coarse = taylor_green_change(32, points, 0.5).energy_lost;
    const double fine = taylor_green_change(64, points, 0.5).energy_lost;
    EXPECT_GT(coarse / fine, 1.85) << points;
    EXPECT_LT(coarse / fine, 4) << points;
    const double half_step = taylor_green_change(32, points, 0.25).energy_lost / coarse;
    EXPECT_GT(half_step, 0.5) << points;
    EXPECT_LT(half_step, 0.8) << points;
  }
}

// A scheme of second order carries a sharp edge with an error of order 2/3 (Brenner, Thomee and
// Wahlbin 1975). On 32 and 64 cells the order is within a tenth of that. The limits of the errors
// lie 5 % above what was measured: fewer, longer steps blur less, and so does cubic sampling.
TEST(Validation, DiscGoesRound) {
  struct {
    double cfl;
    int points;
    double error, mass;
  } const cases[] = {
      {0.5, 3, 0.56, 0.05}, {1, 4, 0.28, 0.025}, {4, 3, 0.395, 0.02}, {4, 4, 0.213, 0.01}};
  for (const auto& c : cases) {
    const DiscState disc = turn_disc(64, c.cfl, c.points);
    EXPECT_LT(disc.error, c.error) << c.cfl << " " << c.points;
    EXPECT_NEAR(disc.mass, 1, c.mass) << c.cfl << " " << c.points;
    EXPECT_LE(disc.peak, 1 + 1e-6) << c.cfl << " " << c.points;
  }
  for (const int points : {3, 4}) {
    const double coarse = turn_disc(32, 0.5, points).error;
    EXPECT_NEAR(std::log2(coarse / turn_disc(64, 0.5, points).error), 2.0 / 3, 0.07) << points;
  }
}

// The formula holds for thin cores. Here the core has 1.3 cells at the start, and numerical
// viscosity widens it to half the radius of the ring; the formula gets its measured size. It is
// then wrong by some percent, and so is the size, since the core is no longer round.
TEST(Validation, VortexRingMovesAsKelvinSays) {
  const RingMotion ring = move_ring(16, 4);
  EXPECT_NEAR(ring.speed / ring.theory, 1, 0.1);
  EXPECT_NEAR(ring.rows.back()[2], ring.rows.front()[2], 0.01) << "radius";
}

// Numerical viscosity widens the layer and slows the waves: the finer grid comes nearer to the
// theory without viscosity, from below. It reaches 69 % with a pressure that is solved to 1e-5.
TEST(Validation, ShearLayerGrows) {
  const ShearGrowth coarse = grow_shear(64, 5, 4), fine = grow_shear(128, 5, 4);
  EXPECT_LT(coarse.rate, fine.rate);
  EXPECT_LT(fine.rate, fine.theory);
  EXPECT_GT(fine.rate, 0.65 * fine.theory);
}

}  // namespace
}  // namespace nbx::physics
