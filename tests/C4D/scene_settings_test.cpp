#include "C4D/settings/scene_settings.h"

#include "C4D/parameters/volume_parameters.h"
#include "C4D/scene_run.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/settings/volume_grid.h"
#include "math/field_pool.h"
#include "simulation/records.h"
#include "simulation/workspace.h"
#include "util/exception.h"
#include "util/memory.h"

namespace nbx {
namespace {

std::string volume(const std::string& parameters, const std::string& rest = "") {
  return R"({"type": "volume", "name": "v", "parameters": {)" + parameters + "}" + rest + "}";
}

void expect_near(const Vec3d& a, const Vec3d& b) {
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(a[i], b[i], 1e-9) << "axis " << i;
}

TEST(VolumeGrid, CentersOfCellsLieAtIntegers) {
  test::TestDocument document(
      volume(R"("size": [10, 8, 6], "voxel_size": 2)", R"(, "position": [100, 50, -20])"));
  const VolumeGrid grid = volume_grid(document.object("v"), 2);
  // x: -5 .. 5 in voxels of 2 reaches from -3 to 3, y: -4 .. 4 from -2 to 2, z: -3 .. 3 from -2
  // to 2.
  EXPECT_EQ(grid.dims(), Vec3i(6, 4, 4));
  expect_near(grid.world_to_grid(Vec3d(100 - 6 + 1, 50 - 4 + 1, -20 + 4 - 1)), {0, 0, 0});
  expect_near(grid.world_to_grid(Vec3d(100 + 6 - 1, 50 + 4 - 1, -20 - 4 + 1)), {5, 3, 3});

  // A turn of a quarter about y brings the object's x to -z: the cells turn along.
  test::TestDocument turned(volume(R"("size": [10, 8, 6])", R"(, "rotation": [90, 0, 0])"));
  const Vec3d x_end = to_vector(turned.object("v").GetMg() * host::Vector{4.5, 0, 0});
  EXPECT_NEAR(std::abs(x_end[2]), 4.5, 1e-9);
  EXPECT_NEAR(volume_grid(turned.object("v"), 1).world_to_grid(x_end)[0], 9, 1e-9);
}

TEST(VolumeGrid, SmallestAndImpossibleDomains) {
  test::TestDocument flat(volume(R"("size": [0, 1, 1e9], "voxel_size": 1)"));
  const VolumeGrid grid = volume_grid(flat.object("v"), 1);
  EXPECT_EQ(grid.dims()[0], 2);
  EXPECT_NE(what_is_wrong(grid).find("along z"), std::string::npos);
  EXPECT_NE(what_is_wrong(volume_grid(flat.object("v"), 0)).find("along y"), std::string::npos);
  EXPECT_TRUE(what_is_wrong(volume_grid(flat.object("v"), 1e4)).empty());
  EXPECT_THROW(read_step_settings(test::Records().view, flat.object("v"), 0), Exception);
}

TEST(SceneSettings, ChannelsRatesAndWhatFuelFeeds) {
  test::TestDocument document("burning_volume.json");
  test::Records run;
  FrameSink sink;
  read_run_settings(run.params, sink, document.object("v"));
  EXPECT_EQ(sink.cached_channels, (std::set<int>{kDensity, kVelocity, kSolid}));
  SolverParams s = read_step_settings(run.view, document.object("v"), 0).params;
  EXPECT_EQ(s.simulated_channels, (std::set<int>{kDensity, kTemperature}));
  EXPECT_EQ(s.interp_points, 4);
  EXPECT_EQ(s.channel_params[kDensity].decay, 0.999999);
  EXPECT_EQ(s.channel_params[kTemperature].buoyancy, 2.5);
  expect_near(s.channel_params[kTemperature].direction, {0, 0.6, -0.8});
  EXPECT_EQ(s.time_scale, 1e-6);
  EXPECT_EQ(s.channel_params[kBurn].diffusion, 0.08);
  EXPECT_EQ(s.velocity_box_threshold, -1);

  const ChannelParams& fuel = s.channel_params[kFuel];
  EXPECT_EQ(fuel.decay_mode, DecayMode::kLinear);
  EXPECT_EQ(fuel.driver_blur, 0.03);
  EXPECT_EQ(fuel.driver_spline.evaluate(1), 4);
  // A level start and a straight end: 4 t^2 (3 - 2 t) + 4 t^2 (t - 1) at t = 1/2.
  EXPECT_EQ(fuel.driver_spline.evaluate(0.75f), 1.5f);
  std::map<int, std::pair<double, bool>> outputs;
  for (const auto& [key, output] : fuel.outputs) outputs[key] = {output.amount, output.additive};
  EXPECT_EQ(outputs, (decltype(outputs){{kBurn, {1, false}},
                                        {kExpansion, {5, true}},
                                        {kTemperature, {6, false}},
                                        {kDensity, {7, true}}}));
}

// A run set up by hand begins like a scene without parameters, save for the number of substeps.
TEST(SceneSettings, RecordsBeginWithTheDefaultsOfTheTables) {
  test::TestDocument document(volume(""));
  test::Records run;
  FrameSink sink;
  read_run_settings(run.params, sink, document.object("v"));
  const auto values = [](const SolverParams& s) {
    return std::tuple(s.voxel_size, s.time_scale, s.cfl, s.vorticity, s.drag, s.noise.amplitude,
                      s.noise.persistence, s.velocity_box_threshold, s.interp_points,
                      s.adaptive_tracer, s.keep_traces, s.clamp_velocity, s.fit_to_walls,
                      s.mask_channels_by_solid);
  };
  EXPECT_EQ(values(read_step_settings(run.view, document.object("v"), 0).params), values({}));
}

TEST(SceneSettings, MovingDomainFeelsWind) {
  // 50 units in a second: 0.5 simulation units per second along x and z.
  const std::string moves = R"(, "keyframes": {"position": [[0, [0, 0, 0]], [25, [50, 0, 50]]],
      "parameters.drag": [[0, 0.1], [9, 0.2]]})";
  test::Records run;
  run.clock.sim_time.length = {1, 25};
  run.clock.frame_duration = 0.04;
  const auto wind = [&run](test::TestDocument& document, double dt) {
    return read_step_settings(run.view, document.object("v"), dt).domain.wind.velocity();
  };
  test::TestDocument document(volume(R"("wind_speed": 30)", moves));
  const host::BaseTime before = document->GetTime();
  host::BaseContainer& data = document.object("v").GetDataInstance();
  data.SetReal(OVOLUME.DRAG, 0.5);
  expect_near(wind(document, 0.04), {0.3 - 0.5, 0, 0.5});
  EXPECT_EQ(data.GetReal(OVOLUME.DRAG), 0.5) << "the document was evaluated: its keys say 0.1";
  EXPECT_EQ(document->GetTime(), before);
  EXPECT_EQ(document.object("v").GetMg().off, host::Vector());
  expect_near(wind(document, 0), {0.3, 0, 0});

  test::TestDocument carried(volume(R"("wind_speed": 30, "wind_world": true)", moves));
  expect_near(wind(carried, 0.04), {0.3, 0, 0});

  // A frame lies where the domain is at its end.
  test::SceneRun frames(volume(R"("size": [9, 9, 9])", moves));
  frames.frame();
  EXPECT_EQ(frames.sim.domain.world_to_grid,
            volume_grid(frames.object("v"), frames.sim.params.voxel_size).world_to_grid);
}

TEST(VolumeCache, ShowsCachedFramesAtDocumentTimes) {
  const auto at = [](const std::string& parameters, int frame) {
    test::TestDocument document(volume(parameters));
    return frame_at_time(document.object("v"), host::BaseTime::FromFrame(frame, 25));
  };
  const std::string own = R"("time_mode": "own_range", "time_start": 0.4, "time_end": 2)";
  EXPECT_EQ(at(R"("time_mode": "document_range", "frame_stride": 2)", 7), 14);
  EXPECT_EQ(at(own + R"(, "frame_stride": 2)", 13), 10 + 2 * 3);
  EXPECT_EQ(at(own + R"(, "frame_offset": 4)", 13), 9);
  EXPECT_EQ(at(own + R"(, "frame_stride": 2)", 9), 8);
}

// What a run in a domain full of gas holds at most, besides the frame that is cached. Vorticity
// takes its fields when those of the advection are free again.
TEST(Workspace, CoversWhatARunHolds) {
  for (const std::string direct : {"true", "false"})
    for (const std::string solid : {"true", "false"}) {
      field_pool().release_unused();
      const std::uint64_t before = field_bytes();
      test::SceneRun run(test::data("full_domain.json", {{"DIRECT", direct}, {"SOLID", solid}}));
      for (int i = 0; i < 3; ++i) run.frame();
      ASSERT_EQ(run.sim.domain.active_box, run.sim.domain.domain_box);
      const double held = field_bytes() - before;
      const double told =
          workspace_bytes(run.sim.params, run.sim.sink, {30, 24, 28}, solid == "true");
      EXPECT_TRUE(held <= told && held > 0.65 * told) << held << " of " << told;
    }
  EXPECT_GT(physical_memory(), resident_memory());
}

}  // namespace
}  // namespace nbx
