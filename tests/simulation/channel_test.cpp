// Decay, combustion, diffusion and sources of the channels, and the velocity and solids of a scene.
#include <random>

#include "cache/grid_type.h"
#include "math/field_reductions.h"
#include "math/mfield_operations.h"
#include "simulation/cusl_kernels3d.h"
#include "simulation/scene_run.h"
#include "simulation/steps/scalar_fluid_channel.h"

namespace nbx {
namespace {

constexpr float kFrame = 0.04f;

// The four channels over a resting fluid, with the hooks of a substep called in their order.
class Reactor : public CombustionSource, public FieldSource, public test::Records {
 public:
  explicit Reactor(int substeps = 1, int n = 6) {
    params.simulated_channels = {kDensity, kTemperature, kFuel, kBurn};
    params.channel_params[kFuel].driver_key = kNoChannel;
    params.channel_params[kFuel].outputs = {{kBurn, {1, false}},
                                            {kExpansion, {2, true}},
                                            {kTemperature, {3, false}},
                                            {kDensity, {0.5, true}}};
    domain.active_box = {{0, 0, 0}, {n - 1, n - 1, n - 1}};
    clock.frame_duration = kFrame;
    clock.dt = static_cast<double>(kFrame) / substeps;
    domain.dx = 1;
    for (int key : {kFuel, kBurn, kDensity, kTemperature})
      channels.push_back(std::make_unique<ScalarFluidChannel>(view, key));
    for (auto& channel : channels) channel->begin_step();
  }

  void step() {
    CuslKernels3D fluid(view);  // at rest: nothing is carried
    for (auto& channel : channels) channel->begin_step();
    for (auto& channel : channels) channel->decay_and_advect(fluid, *this);
    finish();
  }
  // The second half of a substep, without advection.
  void finish() {
    take_sources();
    for (auto& channel : channels) channel->after_sources();
    for (auto& channel : channels) channel->end_step();
  }
  void take_sources() {
    for (auto& channel : channels)
      channel->finish_step(*this, *this, sources.channel(channel->key()));
  }
  bool combustion(MField& target, int key) override { return channels[0]->combustion(target, key); }
  MField* get_field(int key) override {
    for (auto& channel : channels)
      if (MField* field = channel->get_field(key)) return field;
    return nullptr;
  }
  Field<float>& field(int key) { return get_field(key)->write_cpu(); }
  // Fills the interior of a channel.
  void fill(int key, float value) {
    Field<float>& f = field(key);
    test::each_cell(f.dims(), 1, [&](int i, int j, int k) { f(i, j, k) = value; });
  }

  std::vector<std::unique_ptr<ScalarFluidChannel>> channels;  // fuel first
  StepSources sources{*this, domain};
};

TEST(Channel, DecayIsAShareOfAFrame) {
  for (DecayMode mode : {DecayMode::kLinear, DecayMode::kExponential})
    for (int substeps : {1, 5}) {
      Reactor r(substeps);
      r.params.channel_params[kDensity].decay = 0.3;
      r.params.channel_params[kDensity].decay_mode = mode;
      r.fill(kDensity, 0.9f);
      for (int i = 0; i < substeps; ++i) r.step();
      EXPECT_NEAR(r.field(kDensity)(3, 3, 3), mode == DecayMode::kLinear ? 0.6 : 0.63, 1e-6);
      EXPECT_EQ(r.field(kDensity)(0, 3, 3), 0);
    }
}

// Additive outputs gain what the fuel loses; lifted targets don't depend on the length of a
// substep.
TEST(Channel, FuelFeedsWhatItLoses) {
  for (DecayMode mode : {DecayMode::kLinear, DecayMode::kExponential}) {
    std::vector<float> burn;
    for (int substeps : {1, 4}) {
      Reactor r(substeps);
      r.params.channel_params[kFuel].decay_mode = mode;
      r.params.channel_params[kFuel].decay = 0.2;
      r.fill(kFuel, 1);
      const double fuel = sum(r.field(kFuel));
      // The fuel loses in each substep what burned in the one before: the run starts and ends with
      // half a substep.
      r.finish();
      for (int i = 0; i < 3 * substeps; ++i) r.step();
      const double density = sum(r.field(kDensity));
      CuslKernels3D fluid(r.view);
      r.channels[0]->decay_and_advect(fluid, r);
      EXPECT_NEAR(fuel - sum(r.field(kFuel)), density / 0.5, 1e-5 * fuel);
      burn.push_back(r.field(kBurn)(3, 3, 3));
      EXPECT_FLOAT_EQ(r.field(kTemperature)(3, 3, 3), 3 * burn.back());
    }
    // The linear rate of a whole frame is 0.2, the exponential one is the fuel at the start.
    EXPECT_NEAR(burn[0], mode == DecayMode::kLinear ? 0.2 : 1, 1e-6);
    EXPECT_NEAR(burn[1], burn[0], 1e-6);
  }
}

TEST(Channel, ADriverBoundsWhatBurns) {
  // Half of the gas is hot. Fuel burns only there, and no more than the curve allows.
  Reactor r;
  ChannelParams& fuel = r.params.channel_params[kFuel];
  fuel.driver_key = kTemperature;
  fuel.driver_spline.addPoint(0, 0);
  fuel.driver_spline.addPoint(1, 0.1f, kLinearTangent, kLinearTangent);
  fuel.outputs = {{kDensity, {1, true}}};
  r.fill(kFuel, 1);
  test::each_cell({8, 8, 8}, 1, [&](int i, int j, int k) {
    if (i >= 4) r.field(kTemperature)(i, j, k) = 1;
  });
  r.finish();
  r.step();
  EXPECT_FLOAT_EQ(r.field(kFuel)(5, 3, 3), 0.9f);
  EXPECT_FLOAT_EQ(r.field(kDensity)(5, 3, 3), 0.2f);
  EXPECT_EQ(r.field(kFuel)(2, 3, 3), 1);
  EXPECT_EQ(r.field(kDensity)(2, 3, 3), 0);
  EXPECT_TRUE(r.channels[0]->burned().empty()) << "without expansion it is dropped";

  // A blurred driver burns fuel beside the hot cells too, and keeps what burned for the next step.
  fuel.driver_blur = 1;
  r.step();
  r.step();
  EXPECT_LT(r.field(kFuel)(3, 3, 3), 1);
  EXPECT_FALSE(r.channels[0]->burned().empty());

  // A driver that doesn't exist limits nothing.
  Reactor alone;
  alone.params.channel_params[kFuel].driver_key = kVelocity;
  alone.fill(kFuel, 1);
  alone.finish();
  alone.step();
  EXPECT_NEAR(alone.field(kFuel)(3, 3, 3), 0.2, 1e-6);

  // A channel that was empty knows what it got.
  Reactor fresh;
  fresh.fill(kFuel, 1);
  fresh.step();
  IntBox content;
  fresh.channels[2]->content_box(content);
  EXPECT_EQ(content.size(), Vec3i(8, 8, 8)) << "with a cell around it";
}

TEST(Channel, ExpansionIsTheVolumeOfWhatBurned) {
  Reactor r;
  r.fill(kFuel, 1);
  r.take_sources();
  for (auto& channel : r.channels) channel->after_sources();
  MField target(kCpu, {8, 8, 8});
  target.zero();
  ASSERT_TRUE(r.channels[0]->add_divergence(target, r.clock.dt));
  EXPECT_FLOAT_EQ(target.read_cpu()(3, 3, 3), 2 * 0.8f / kFrame);
  EXPECT_FALSE(r.channels[1]->add_divergence(target, r.clock.dt));
  EXPECT_FALSE(r.channels[0]->add_divergence(target, 0));
}

// From rest, hot gas of temperature T gets the speed dt * buoyancy * min(T, 1) in the first step,
// along the given direction. A face at the edge of the hot gas gets half.
TEST(Channel, BuoyancyGivesTheFirstStepItsSpeed) {
  Reactor r;
  ChannelParams& p = r.params.channel_params[kTemperature];
  p.buoyancy = 6;
  p.direction = {0, 2, 0};
  for (int k = 1; k < 7; ++k)
    for (int i = 1; i < 7; ++i) {
      r.field(kTemperature)(i, 2, k) = 0.5f;
      r.field(kTemperature)(i, 3, k) = 9;
    }
  CuslKernels3D fluid(r.view);
  fluid.resize({0, 0, 0});
  r.channels[3]->add_forces(fluid, r.clock.dt);
  const Field<float>& V = fluid.V().read_cpu();
  const float full = 6 * kFrame;
  EXPECT_FLOAT_EQ(V(3, 3, 3), 0.75f * full);
  EXPECT_FLOAT_EQ(V(3, 4, 3), 0.5f * full);
  EXPECT_EQ(V(3, 6, 3), 0);
  EXPECT_EQ(infnorm(fluid.U().read_cpu()), 0);
}

// After a time t, a point of heat has the variance 2 D t on each axis.
TEST(Channel, DiffusionFollowsTheHeatEquation) {
  Reactor r(1, 31);
  r.params.simulated_channels = {kDensity};
  ChannelParams& density = r.params.channel_params[kDensity];
  density.diffusion = 20;
  r.field(kDensity)(16, 16, 16) = 1;
  const int steps = 3;
  for (int i = 0; i < steps; ++i) r.step();
  const Field<float>& f = r.field(kDensity);
  double mass = 0, variance = 0;
  test::each_cell(f.dims(), 0, [&](int i, int j, int k) {
    mass += f(i, j, k);
    variance += f(i, j, k) * (i - 16) * (i - 16);
  });
  EXPECT_NEAR(mass, 1, 1e-4);
  // Each step integrates over a voxel, which adds its variance of 1/12.
  const double expected = steps * (2 * 20 * r.clock.dt + 1.0 / 12);
  EXPECT_NEAR(variance / mass, expected, 0.02 * expected);
}

TEST(Channel, SourcesAreAddedOrLiftTo) {
  Reactor r;
  r.params.channel_params[kFuel].outputs.clear();
  r.fill(kDensity, 0.25f);
  r.fill(kTemperature, 5);
  SparseField<float, 3> weights;
  test::voxel(weights, 2, 2, 2) = 0.5f;
  SimulationObjectParameters object;
  object.amounts = {{kDensity, 1}, {kTemperature, 2}, {kFuel, 4}, {kBurn, 0}, {kVelocity, 1}};
  object.add_keys = {kDensity};
  for (int i = 0; i < 2; ++i) r.sources.add_source_object(object, weights);
  EXPECT_TRUE(r.sources.channel(kVelocity).empty()) << "no channel holds it";
  r.take_sources();
  EXPECT_FLOAT_EQ(r.field(kDensity)(3, 3, 3), 1.25f);
  EXPECT_EQ(r.field(kTemperature)(3, 3, 3), 5) << "a set amount never lowers";
  EXPECT_EQ(r.field(kFuel)(3, 3, 3), 2) << "two objects that set don't add up";
  EXPECT_EQ(sum(r.field(kBurn)), 0);
}

using test::Sparse;

/// A closed domain of 20 cells with density in all of it.
struct GasRun : test::BoxRun {
  GasRun() {
    sim.params.simulated_channels = {kDensity};
    sim.sink.cached_channels = {kDensity, kSolid};
    scene.cells = {20, 20, 20};
    scene.source = {{0, 0, 0}, {19, 19, 19}};
    scene.object.amounts = {{kDensity, 1}};
    scene.settings = [](StepSettings& s) {
      s.domain.face_closed = {1, 1, 1, 1, 1, 1};
      s.params.velocity_box_threshold = -1;
    };
  }
};

// A solid at rest that fills x < 5.5 of the grid.
Solids wall(const RunView& run) {
  const auto phi = [](int i, int, int) {
    const float d = static_cast<float>(i) - 5.5f;
    return d * std::abs(d);
  };
  return test::make_solids(run.domain, phi, 0);
}

// A speed of 5 perpendicular to the side x + y = const of an object that is stretched along y: the
// direction turns with the side, the length stays.
TEST(SourceObject, ADirectionBecomesFaceVelocities) {
  Sparse weights;
  std::mt19937 engine(3);
  std::uniform_real_distribution<float> value(0, 1);
  for (const Vec3i& block : {Vec3i(8, 8, 8), Vec3i(16, 8, 8), Vec3i(8, 24, 0)})
    for (int i = 0; i < Sparse::kBlockSize; ++i)
      weights.hash_insert(block[0], block[1], block[2]).data[i] = value(engine);
  SimulationObjectParameters object;
  object.transform.rows = {Vec3d(1, 0, 0), Vec3d(0, 2, 0), Vec3d(0, 0, -1)};
  object.direction = {3, 4, 0};
  const Vec3d d = Vec3d(3, 2, 0) * (5 / std::sqrt(13.0));

  for (const int threads : {1, 3}) {
    const test::ThreadCount count(threads);
    Reactor r;
    for (int i = 0; i < 2; ++i) r.sources.add_source_object(object, weights);
    for (int axis = 0; axis < 3; ++axis) {
      const Sparse& faces = *r.sources.velocity_sources()[axis];
      Vec3i back;
      back[axis] = 1;
      test::each_cell({34, 34, 18}, 1, [&](int x, int y, int z) {
        const float da = static_cast<float>(d[axis]), w = weights.value(x, y, z);
        const Vec3i low = Vec3i(x, y, z) - back;
        const float wl = weights.value(low[0], low[1], low[2]);
        const bool covered = weights.find(low[0], low[1], low[2]) != nullptr;
        ASSERT_FLOAT_EQ(faces.value(x, y, z), covered ? da * wl * wl : 2 * da * w) << x << y << z;
      });
    }
  }
}

// A push in the middle of the domain is symmetric.
TEST(SourceObject, TheGasTakesTheVelocityOnceAndInItsCells) {
  for (int axis = 0; axis < 3; ++axis) {
    GasRun run;
    run.start();
    run.scene.source = {{8, 8, 8}, {11, 11, 11}};
    run.scene.object.direction[axis] = 0.5;
    run.frames(1);
    const Field<float>& f = run.sim.fluid().component(axis).read_cpu();
    EXPECT_GT(infnorm(f), 0.2f);
    float worst = 0;
    test::each_cell({22, 22, 22}, 1, [&](int i, int j, int k) {
      for (int side = 0; side < 3; ++side) {
        Vec3i other(i, j, k);
        other[side] = 21 - other[side];
        if (side != axis)
          worst = std::max(worst, std::abs(f(i, j, k) - f(other[0], other[1], other[2])));
      }
    });
    EXPECT_LT(worst, 0.002f);
    run.scene.object.direction = {};
    const float before = infnorm(f);
    run.frames(1);
    EXPECT_LE(m_infnorm(run.sim.fluid().component(axis)), before * 1.01f);
  }
}

/// Looks at the frame that would be stored at the end of a substep.
struct FrameWatch : SimProgress {
  explicit FrameWatch(Simulation3D& of) : sim(of) {}
  bool progress(int, int) override { return true; }
  void substep_done(const Simulation3D&) override {
    SimFrame frame;
    frame.ownsData = false;
    sim.fill_frame(frame, sim.sink.cached_channels, {});
    solid = frame.grids.contains(kGridSolid) ? (*frame.grid(kGridSolid))(4, 9, 9) : 0;
    at_wall = (*frame.grid(kGridDensity))(5, 9, 9);
    beyond = (*frame.grid(kGridDensity))(6, 9, 9);
  }

  Simulation3D& sim;
  float solid = 0, at_wall = 0, beyond = 0;
};

TEST(SourceObject, SolidsGoIntoFramesAndMaskChannels) {
  GasRun run;
  FrameWatch watch(run.sim);
  run.start();
  run.sim.update(run.scene, run.time, &watch);
  EXPECT_EQ(watch.solid, 0) << "there is none";
  run.scene.solids = wall;
  for (const bool masked : {false, true}) {
    run.sim.params.mask_channels_by_solid = masked;
    run.sim.update(run.scene, run.time, &watch);
    EXPECT_EQ(watch.solid, -2.25f);
    EXPECT_EQ(watch.beyond, 1);
    EXPECT_EQ(watch.at_wall, masked ? 1 : 0) << "the stored field extends into the wall";
    EXPECT_EQ(run.channel(kDensity)(5, 9, 9), 0);
  }
}

}  // namespace
}  // namespace nbx
