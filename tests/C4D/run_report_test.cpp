#include "C4D/commands/run_report.h"

#include "C4D/recording_context.h"
#include "C4D/scene_run.h"

namespace nbx {
namespace {

// Gas expands in a room with six walls. The figures cover all substeps of the frame. The warning
// comes once, at the first frame whose residual is above the tolerance.
TEST(RunReport, CountsGasWithoutRoomAndUnconvergedPressure) {
  test::SceneRun run(R"({"type": "volume", "name": "v", "parameters": {
      "size": [12, 10, 8], "max_substeps": 3, "cfl": 0.01, "simulate_density": true,
      "closed_x_min": true, "closed_x_max": true, "closed_y_min": true, "closed_y_max": true,
      "closed_z_min": true, "closed_z_max": true}})");
  double rate = 50;  // per second, in one voxel
  run.after_inputs = [&](StepSources& sources) {
    sources.divergence().hash_insert(0, 0, 0).data[3 + 8 * (4 + 8 * 5)] = static_cast<float>(rate);
  };
  host::SmallHost host;
  test::RecordingContext context(host);
  RunReport report(context, 3);
  run.frame();
  run.frame();
  ASSERT_EQ(run.sim.clock.step_index, 3);
  const double volume = 50 * 0.04 * std::pow(run.sim.domain.dx, 3);  // in a frame of 0.04 s
  EXPECT_NEAR(run.sim.pressure().frame_confined() / volume, 1, 1e-3);
  report.frame(1, run.sim);
  EXPECT_EQ(context.warnings.size(), 0u);
  ASSERT_EQ(context.notes.size(), 1u);
  EXPECT_NE(context.notes[0].find("frame 1: 2e-06 m3 of gas had nowhere to go"), std::string::npos)
      << context.notes[0];
  EXPECT_EQ(context.all<double>("frame", "confined_volume").back(),
            run.sim.pressure().frame_confined());
  EXPECT_EQ(context.all<double>("frame", "residual").back(), run.sim.pressure().frame_residual());
  EXPECT_GT(run.sim.pressure().frame_residual(), 0);

  rate = -50;
  run.frame();
  run.sim.params.pressure_tolerance = 1e-12;
  for (int frame : {2, 3}) report.frame(frame, run.sim);
  EXPECT_NE(context.notes[1].find("2e-06 m3 of gas is missing"), std::string::npos);
  EXPECT_EQ(report.frames_above_tolerance(), 2);
  ASSERT_EQ(context.warnings.size(), 1u);
  EXPECT_NE(context.warnings[0].find("frame 2: the pressure did not converge"), std::string::npos);
}

}  // namespace
}  // namespace nbx
