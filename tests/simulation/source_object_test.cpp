// Velocity and solids that a scene gives: from the source object to the gas and the frame.
#include <random>

#include "cache/grid_type.h"
#include "math/field_reductions.h"
#include "math/mfield_operations.h"
#include "simulation/scene_run.h"

namespace nbx {
namespace {

using test::Sparse;

/// A closed domain of 20 cells with density in all of it.
struct GasRun : test::SceneRun {
  GasRun() {
    sim.settings.simulated_channels = {kDensity};
    sim.settings.cached_channels = {kDensity, kSolid};
    scene.domain = {20, 20, 20};
    scene.source = {{0, 0, 0}, {19, 19, 19}};
    scene.object.amounts = {{kDensity, 1}};
    scene.settings = [](SimSettings& s) {
      s.face_closed = {1, 1, 1, 1, 1, 1};
      s.velocity_box_threshold = -1;
    };
  }
};

// A solid at rest that fills x < 5.5 of the grid.
void add_wall(Simulation3D& sim) {
  const Vec3i n = sim.settings.active_box.size() + Vec3i(2, 2, 2);
  sim.solids.phi = std::make_shared<MField>(kCpu, n);
  Field<float>& phi = sim.solids.phi->cpu_field();
  test::each_cell(n, 0, [&](int i, int j, int k) {
    const float d = static_cast<float>(i) - 5.5f;
    phi(i, j, k) = d * std::abs(d);
  });
  std::shared_ptr<MField>* faces[] = {&sim.solids.u, &sim.solids.v, &sim.solids.w};
  for (int axis = 0; axis < 3; ++axis) {
    Vec3i face = n;
    ++face[axis];
    *faces[axis] = std::make_shared<MField>(kCpu, face);
    (*faces[axis])->zero();
  }
}

// A speed of 5 across the side x + y = const of an object that is stretched along y: the direction
// turns with the side, and the length stays.
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
    GasRun run;
    run.sim.add_source_object(object, weights);
    run.sim.add_source_object(object, weights);
    for (int axis = 0; axis < 3; ++axis) {
      const Sparse& faces = *run.sim.velocity_sources()[static_cast<std::size_t>(axis)];
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

// A blow from the middle of the domain is the same on both of its sides.
TEST(SourceObject, TheGasTakesTheVelocityOnceAndInItsCells) {
  for (int axis = 0; axis < 3; ++axis) {
    GasRun run;
    run.start();
    run.scene.source = {{8, 8, 8}, {11, 11, 11}};
    run.scene.object.direction[axis] = 0.5;
    run.frames(1);
    const Field<float>& f = run.sim.fluid().component(axis).cpu_field();
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
    for (const Sparse* given : run.sim.velocity_sources()) EXPECT_TRUE(given->empty());
    run.scene.object.direction = {};
    const float before = infnorm(f);
    run.frames(1);
    EXPECT_LE(m_infnorm(run.sim.fluid().component(axis)), before * 1.01f);
  }
}

TEST(Wind, MovesGasAtRestAtOnce) {
  SimSettings s;
  s.domain_box = s.active_box = {{0, 0, 0}, {7, 7, 7}};
  CuslKernels3D fluid(s);
  fluid.resize({0, 0, 0});
  fluid.begin_step();
  EXPECT_TRUE(fluid.zero_velocity());
  s.wind_direction = {0.6, 0, -0.8};
  s.wind_speed = 2.5;
  fluid.begin_step();
  EXPECT_FALSE(fluid.zero_velocity());
  EXPECT_EQ(fluid.U().cpu_field()(4, 4, 4) + 10 * fluid.W().cpu_field()(4, 4, 4), 1.5f - 20);
}

/// Looks at the frame that would be stored at the end of a substep.
class FrameWatch : public SimProgress {
 public:
  explicit FrameWatch(GasRun& run) : run_(run) {}
  bool progress(int, int) override { return true; }
  void substep_done(const Simulation3D&) override {
    SimFrame frame;
    frame.ownsData = false;
    run_.sim.fill_frame(frame, run_.sim.settings, run_.time);
    solid = frame.grids.contains(kGridSolid) ? frame.grid(kGridSolid)->operator()(4, 9, 9) : 0;
    const Field<float>& density = *frame.grid(kGridDensity);
    at_wall = density(5, 9, 9);
    beyond = density(6, 9, 9);
  }
  float solid = 0, at_wall = 0, beyond = 0;

 private:
  GasRun& run_;
};

TEST(SourceObject, SolidsGoIntoFramesAndMaskChannels) {
  GasRun run;
  FrameWatch watch(run);
  run.start();
  run.sim.update(run.scene, run.time, &watch);
  EXPECT_EQ(watch.solid, 0) << "there is none";
  run.scene.solids = add_wall;
  for (const bool masked : {false, true}) {
    run.sim.settings.mask_channels_by_solid = masked;
    run.sim.update(run.scene, run.time, &watch);
    EXPECT_EQ(watch.solid, -2.25f);
    EXPECT_EQ(watch.beyond, 1);
    EXPECT_EQ(watch.at_wall, masked ? 1 : 0) << "the stored field goes on into the wall";
    EXPECT_EQ(run.channel(kDensity)(5, 9, 9), 0);
  }
}

}  // namespace
}  // namespace nbx
