// The model of a forecast on probes made by hand.
#include "C4D/forecast/forecast.h"

#include <cmath>

#include "support/support.h"

namespace nbx {
namespace {

/// A cube of gas whose edge grows by `growth` voxels a frame from the domain's middle, `at` frames.
/// It has as many substeps as it wants. A substep costs 0.001 s and 1 ns a cell; a cell has 4, 3
/// and 2 bytes by codec.
Probe growing(double voxel_size, int domain, double growth, int at, double travel) {
  Probe probe{voxel_size, Vec3i(domain, domain, domain), 1, {}, false};
  const int steps = static_cast<int>(std::ceil(travel));
  for (int f = 0; f < at; ++f) {
    const int half = static_cast<int>(std::lround((4 + f) * growth));
    const int lo = std::max(0, domain / 2 - half), hi = std::min(domain, domain / 2 + half) - 1;
    ProbeFrame frame{f, {Vec3i(lo, lo, lo), Vec3i(hi, hi, hi)}, f == 0 ? 0 : steps, travel, 0, 0,
                     {}};
    frame.seconds = frame.substeps * (1e-3 + 1e-9 * frame.cells());
    frame.of_channels = frame.substeps * 0.5e-9 * frame.cells();
    frame.bytes = {4 * frame.cells(), 3 * frame.cells(), 2 * frame.cells()};
    probe.frames.push_back(frame);
  }
  return probe;
}

// Probes that agree in world units foretell the run exactly, also where the domain stops the box.
TEST(Forecast, FollowsTheCoarseProbeBeyondTheFineOne) {
  const ForecastScene scene{29, Vec3i(80, 80, 80), 2, 8};
  const Probe coarse = growing(4, 20, 0.5, 30, 0.7), fine = growing(1, 80, 2, 11, 2.8),
              whole = growing(1, 80, 2, 30, 2.8);
  const Forecast forecast = forecast_run(scene, coarse, fine);
  ASSERT_EQ(forecast.frames.size(), 30u);
  EXPECT_EQ(forecast.largest_box, Vec3i(80, 80, 80));
  for (int f = 11; f < 30; ++f) {
    const ForecastFrame& frame = forecast.frames[f];
    EXPECT_EQ(frame.frame, f);
    // Halves of coarse voxels are rounded.
    EXPECT_NEAR(std::cbrt(frame.cells), std::cbrt(whole.frames[f].cells()), 4.01) << f;
    EXPECT_EQ(frame.substeps, 3) << "ceil(4 * 0.7)";
    EXPECT_NEAR(frame.seconds, 3 * (1e-3 + 1e-9 * frame.cells), 1e-6);
    EXPECT_NEAR(frame.bytes[1], 3 * frame.cells, 1e-6 * frame.cells);
  }
  const Forecast twice = forecast_upres(scene, forecast, coarse, fine, 2);
  EXPECT_EQ(twice.largest_box, Vec3i(160, 160, 160));
  EXPECT_EQ(twice.frames[20].substeps, 6);
  EXPECT_EQ(forecast_upres(scene, forecast, coarse, fine, 8).frames[20].substeps, 8);
  const double cells = 8 * forecast.frames[20].cells;
  EXPECT_NEAR(twice.frames[20].seconds, (6 + kUpresNoise) * 0.5e-9 * cells, 1e-6);
  EXPECT_NEAR(twice.bytes()[2], 8 * forecast.bytes()[2], 1);
}

// What the probes differ in at their last common frame corrects later frames.
TEST(Forecast, CorrectsWhatLargerVoxelsChange) {
  const ForecastScene scene{29, Vec3i(200, 200, 200), 2, 100};
  const Probe fine = growing(1, 200, 2, 11, 3);
  Probe coarse = growing(4, 50, 0.5, 30, 0.5);
  for (ProbeFrame& frame : coarse.frames) {
    frame.box.lo -= Vec3i(2, 2, 2), frame.box.hi += Vec3i(2, 2, 2);
    for (double& bytes : frame.bytes) bytes = 6 * frame.cells();
  }
  const Forecast forecast = forecast_run(scene, coarse, fine);
  const ForecastFrame& end = forecast.frames.back();
  // Half of the margin of 8 voxels stays.
  const double coarse_edge = std::cbrt(coarse.frames.back().cells());
  EXPECT_NEAR(std::cbrt(end.cells), 4 * coarse_edge - 8, 1e-6);
  EXPECT_EQ(end.substeps, 3) << "as many as the fine probe had";
  EXPECT_NEAR(end.bytes[0] / end.cells, 4, 1e-9);
  EXPECT_NEAR(end.bytes[2] / end.cells, 2, 1e-9);

  // A coarse probe that ends early grows on, up to the domain.
  coarse.frames.resize(13);
  const Forecast grown = forecast_run(scene, coarse, fine);
  ASSERT_EQ(grown.frames.size(), 30u);
  EXPECT_NEAR(std::cbrt(grown.frames.back().cells), std::cbrt(end.cells), 8);
  EXPECT_LE(grown.largest_box[0], 200);
  // A complete probe is the forecast.
  EXPECT_EQ(forecast_run({9, {}, 2, 1}, {}, {1, {}, 1, fine.frames, true}).frames.size(), 11u);
}

}  // namespace
}  // namespace nbx
