// A run as a whole: planning of substeps, progress, abort and continue, saved states.
#include "simulation/simulation3d.h"

#include "cache/bfs.h"
#include "math/field_reductions.h"
#include "simulation/scene_run.h"

namespace nbx {
namespace {

// Records the calls, and asks to stop from the nth on.
class StopFrom : public SimProgress {
 public:
  explicit StopFrom(std::size_t n) : n_(n) {}
  bool progress(int done, int total) override {
    calls.emplace_back(done, total);
    return calls.size() < n_;
  }
  std::vector<std::pair<int, int>> calls;

 private:
  std::size_t n_;
};

// A closed box with a small cube that emits density and heat.
struct SmokeRun : test::BoxRun {
  explicit SmokeRun(int n = 16) {
    scene.cells = {n, n, n};
    scene.source = {{n / 2 - 2, 2, n / 2 - 2}, {n / 2 + 1, 5, n / 2 + 1}};
    scene.settings = [this](StepSettings& s) {
      s.domain.face_closed = {1, 1, 1, 1, 1, 1};
      s.params.max_substeps = max_substeps;
      s.params.cfl = cfl;
      s.params.interp_points = interp_points;
      s.params.channel_params[kTemperature].decay = 0.1;
    };
  }
  int max_substeps = 1, interp_points = 3;
  double cfl = 2;
};

TEST(Simulation3D, FirstFrameHoldsTheSourcesAndHotGasRises) {
  SmokeRun run;
  EXPECT_FALSE(run.sim.start(run.scene, run.time)) << "there is no cache to store into";
  EXPECT_EQ(sum(run.channel(kDensity)), 64);
  EXPECT_TRUE(run.sim.fluid().zero_velocity());

  run.frames(10);
  EXPECT_EQ(run.time.frame(), 10);
  EXPECT_EQ(run.sim.clock.sim_time.time, (Fraction{2, 5}));
  double moment = 0, mass = 0;
  const Field<float>& d = run.channel(kDensity);
  test::each_cell(d.dims(), 0, [&](int i, int j, int k) {
    ASSERT_TRUE(std::isfinite(d(i, j, k)));
    moment += j * d(i, j, k);
    mass += d(i, j, k);
  });
  EXPECT_GT(moment / mass, 4.5 + 0.5) << "the source's center is at row 4.5";
}

TEST(Simulation3D, SubstepsArePlannedEqualAndBounded) {
  // Gas at rest needs one substep, however many are allowed.
  SmokeRun rest;
  rest.max_substeps = 5;
  rest.start();
  rest.frames(1);
  EXPECT_EQ(rest.sim.clock.step_index, 1);
  // A frame of length 0 has no substep, but it is a frame.
  rest.sim.clock.sim_time.length = {0, 1};
  rest.scene.steps.clear();
  rest.frames(1);
  EXPECT_TRUE(rest.scene.steps.empty());
  EXPECT_EQ(rest.time.frame(), 2);

  // Fast gas takes all substeps that are allowed; the CFL limit gives way, not the frame.
  for (int allowed : {1, 3}) {
    SmokeRun fast;
    fast.max_substeps = allowed;
    fast.start();
    fast.frames(2);
    fast.cfl = 1e-4;
    fast.sim.params.cfl = fast.cfl;
    fast.scene.steps.clear();
    fast.frames(1);
    ASSERT_EQ(fast.scene.steps.size(), static_cast<std::size_t>(allowed));
    for (double dt : fast.scene.steps) EXPECT_NEAR(dt, 0.04 / allowed, 1e-12);
    EXPECT_NEAR(fast.sim.clock.frame_elapsed, 0.04, 1e-12);
  }
}

// A scene that gives solids only in the first substep of each frame: they stay for the others.
TEST(Simulation3D, SolidsStayToTheEndOfTheFrameAtRest) {
  SmokeRun run;
  run.max_substeps = 3;
  run.cfl = 1e-4;
  int call = 0;
  run.scene.solids = [&](const RunView& view) {
    ++call;
    if (view.clock.step_index > 0) return Solids();
    const auto phi = [](int i, int j, int k) { return i == 5 && j == 5 && k == 5 ? -1.0f : 99; };
    return test::make_solids(view.domain, phi, 0.5f);
  };
  run.start();
  run.frames(3);
  EXPECT_EQ(call, 1 + 3 + 3) << "the first frame has no motion";
  const Field<float>& U = run.sim.fluid().U().read_cpu();
  EXPECT_TRUE(std::isfinite(infnorm(U)));
  EXPECT_GT(infnorm(U), 0);
}

// A frame of two substeps, after three others.
struct HalvedRun : SmokeRun {
  HalvedRun() : SmokeRun(12) {
    max_substeps = 2;
    cfl = 1e-4;
    start();
    frames(3);
  }
};

std::vector<std::pair<int, int>> calls_of_a_frame() {
  HalvedRun run;
  StopFrom never(1000);
  run.sim.update(run.scene, run.time, &never);
  return never.calls;
}

TEST(Simulation3D, ProgressFillsTheBarSubstepBySubstep) {
  const std::vector<std::pair<int, int>> calls = calls_of_a_frame();
  std::size_t at = 0;
  for (int step = 0; step < 2; ++step) {
    ASSERT_LT(at + 10, calls.size());
    for (int k = 0; k < 10; ++k, ++at) EXPECT_EQ(calls[at], std::pair(10 * step + k, 20));
    const std::size_t first = at;
    for (; at + 1 < calls.size() && calls[at] != std::pair(10, 20); ++at) {
      const double share = static_cast<double>(calls[at].first) / calls[at].second;
      EXPECT_GE(share, 0.5 * step);
      EXPECT_LT(share, 0.5 * (step + 1));
    }
    EXPECT_GT(at, first) << "the solver counts its cycles";
  }
  EXPECT_EQ(at + 1, calls.size());
  EXPECT_EQ(calls.back(), std::pair(1, 1));
}

TEST(Simulation3D, AStopAtAnyPointEndsTheUpdateAndKeepsTheFrame) {
  const std::size_t all = calls_of_a_frame().size() - 1;  // nothing is left to stop at the last one
  ASSERT_GT(all, 20u);
  for (std::size_t n = 1; n <= all; n += n < 13 ? 1 : all - 13) {
    SCOPED_TRACE(n);
    HalvedRun run;
    const FrameTime before = run.time;
    StopFrom stop(n);
    run.sim.update(run.scene, run.time, &stop);
    EXPECT_LE(stop.calls.size(), n + 1) << "the solver ends its cycle";
    EXPECT_EQ(run.time, before);
    ASSERT_GT(run.sim.steps_remaining(), 0);
    run.frames(1);
    EXPECT_EQ(run.time, next_frame(before));
    EXPECT_EQ(run.sim.steps_remaining(), 0);
  }
}

TEST(Simulation3D, FramesAreStoredAndTheStateComesBack) {
  test::TemporaryFolder folder;
  SmokeRun run;
  run.sim.sink.target_cache = std::make_shared<BFS>();
  ASSERT_TRUE(run.sim.sink.target_cache->setDirectory(folder.path()));
  ASSERT_TRUE(run.sim.start(run.scene, run.time));
  run.frames(4);
  EXPECT_TRUE(run.sim.sink.target_cache->finish_writes());
  EXPECT_EQ(run.sim.sink.target_cache->frames(), (std::vector<int>{0, 1, 2, 3, 4}));

  SimFrame frame;
  ASSERT_TRUE(frame.load(run.sim.sink.target_cache->fileName(4, 0)));
  EXPECT_EQ(frame.frameTime, run.time);
  EXPECT_EQ(frame.offset(), Vec3i(-1, -1, -1));
  EXPECT_TRUE(test::same_bits(*frame.grid(kGridDensity), run.channel(kDensity)));

  // A run from the stored state gives the bits of the run that continued. Without the second
  // velocity it starts from the one that is shown, without any from the wind.
  run.frames(3);
  for (const int type : {kGridSecondVelocityX, kGridSecondVelocityY, kGridSecondVelocityZ})
    frame.grids.erase(type);
  SmokeRun shown;
  ASSERT_TRUE(shown.sim.load_state(shown.scene, frame));
  shown.time = frame.frameTime;
  EXPECT_EQ(shown.sim.domain.active_box, run.sim.domain.active_box);
  shown.frames(3);
  EXPECT_EQ(shown.time, run.time);
  EXPECT_TRUE(test::same_bits(shown.sim.fluid().V().read_cpu(), run.sim.fluid().V().read_cpu()));
  EXPECT_TRUE(test::same_bits(shown.channel(kTemperature), run.channel(kTemperature)));
  frame.grids.erase(kGridVelocityY);
  SmokeRun windy;
  windy.sim.domain.wind = {{0, 1, 0}, 0.5};
  ASSERT_TRUE(windy.sim.load_state(windy.scene, frame));
  EXPECT_FALSE(windy.sim.fluid().zero_velocity());
  EXPECT_EQ(windy.sim.fluid().V().read_cpu()(7, 7, 7), 0.5f);
  EXPECT_EQ(windy.sim.fluid().wind_seen().speed, 0.5);

  // A grid below 3 cells is refused, and the simulation can still run.
  SimFrame small;
  small.add(acquire_field({2, 9, 9}), kGridDensity, {0, 0, 0}, {});
  SmokeRun refused;
  EXPECT_FALSE(refused.sim.load_state(refused.scene, small));
  EXPECT_TRUE(refused.sim.domain.active_box.empty());
  refused.frames(1);
  EXPECT_GT(infnorm(refused.channel(kDensity)), 0);

  // A frame that doesn't reach the disk is among the lost frames, and the run continues.
  EXPECT_TRUE(run.sim.sink.target_cache->finish_writes());
  std::filesystem::remove_all(folder.path());
  run.sim.sink.cache_direct = true;
  run.frames(2);
  EXPECT_EQ(run.sim.sink.target_cache->take_lost_frames().size(), 2u);
}

TEST(Simulation3D, SteadyStateAllocatesNothingAndThreadsDontMatter) {
  Field<float> result[2];
  for (int threads : {1, 2}) {
    const test::ThreadCount count(threads);
    SmokeRun run(20);
    run.interp_points = 4;
    run.max_substeps = 2;
    run.start();
    // Pooled fields grow to the largest size that they are used for, within ten frames.
    run.frames(10);
    const std::uint64_t allocated = field_allocations();
    run.frames(10);
    EXPECT_EQ(field_allocations(), allocated);
    result[threads - 1].copy(run.channel(kDensity));
  }
  EXPECT_TRUE(test::same_bits(result[0], result[1]));
}

}  // namespace
}  // namespace nbx
