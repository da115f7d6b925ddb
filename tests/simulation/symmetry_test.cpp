// Symmetric scenes stay symmetric, up to rounding and what grows from it.
#include "bench/physics/symmetry.h"

#include <gtest/gtest.h>

#include "bench/physics/result.h"

namespace nbx::physics {
namespace {

// Rounding isn't symmetric: positions count from the low corner of the grid, and sums run upward.
// In unstable gas it grows tenfold in 12 steps. So the gas is made symmetric before each step, and
// the step may add rounding: floats with 24 bits, of a pressure with a residual of 1e-5. Where
// rounding decides whether the limiter keeps a correction, single samples differ by more; so the
// median counts.
TEST(Symmetry, AStepAddsRoundingAlone) {
  using enum MirrorScene;
  for (const MirrorSetup& setup :
       {MirrorSetup{kVortices, {16, 16, 16}}, MirrorSetup{kVortices, {17, 15, 13}},
        MirrorSetup{kBurst, {16, 16, 16}}, MirrorSetup{kPlume, {16, 17, 15}},
        MirrorSetup{kPlume, {17, 16, 17}, true}, MirrorSetup{kBurst, {16, 16, 16}, false, 4}}) {
    MirrorBox mirror(setup);
    std::vector<double> added;
    // The vortices slow down, and the residual is an absolute limit.
    const int steps = setup.scene == kVortices ? 40 : 100;
    for (int i = 0; i < steps; ++i) {
      mirror.symmetrize();
      mirror.step();
      added.push_back(mirror.asymmetry());
    }
    EXPECT_LT(median(added), 5e-5) << static_cast<int>(setup.scene) << " " << setup.cells[0];
  }
}

// Gas that expands from the middle is stable: nothing grows.
TEST(Symmetry, StaysInStableGas) {
  MirrorBox mirror({MirrorScene::kBurst});
  for (int i = 0; i < 60; ++i) mirror.step();
  EXPECT_LT(mirror.asymmetry(), 1e-5);
}

}  // namespace
}  // namespace nbx::physics
