// The adaptive container: a box that follows the gas, and gives what the whole domain would give.
#include <map>

#include "math/field_operators.h"
#include "math/field_reductions.h"
#include "simulation/health.h"
#include "simulation/simulation3d.h"
#include "support/support.h"

namespace nbx {
namespace {

// A puff of hot smoke in an open domain, given in the first frame and then left alone.
class Puff : public SceneEvaluator {
 public:
  Vec3i domain{32, 48, 32};
  Vec3i at{14, 10, 14};
  bool floor = false, fit_to_walls = true;
  double threshold = 0.001, speed_threshold = 10, expansion = 0, noise = 0;
  int frames_of_source = 1;

  void read_settings(Simulation3D& sim, double) override {
    SimSettings& s = sim.settings;
    s.domain_box = {{0, 0, 0}, domain - Vec3i(1, 1, 1)};
    s.face_closed = {0, 0, floor ? 1 : 0, 0, 0, 0};
    s.fit_to_walls = fit_to_walls;
    s.max_substeps = 1;
    s.dx = 0.05;
    s.frame_duration = 0.04;
    s.channel_params[kDensity].buoyancy = 0;
    s.channel_params[kTemperature].buoyancy = 20;
    s.channel_params[kDensity].box_threshold = threshold;
    s.channel_params[kTemperature].box_threshold = threshold;
    s.velocity_box_threshold = speed_threshold;
    s.noise.amplitude = static_cast<float>(noise);
    s.noise.frequency = 0.2f;
    s.noise.bands = 2;
  }
  void update_inputs(Simulation3D& sim, double) override {
    if (frames_of_source-- <= 0) return;
    SparseField<float, 3> weights;
    for (int z = 0; z < 4; ++z)
      for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
          const Vec3i p = at + Vec3i(x, y, z);
          weights.hash_insert(p[0], p[1], p[2])
              .data[SparseField<float, 3>::voxel_index(p[0] & 7, p[1] & 7, p[2] & 7)] = 1;
        }
    SimulationObjectParameters object;
    object.amounts = {{kDensity, 1}, {kTemperature, 1}, {kExpansion, expansion}};
    sim.add_source_object(object, weights);
  }
  void update_solids(Simulation3D&, double) override {}
};

struct PuffRun {
  PuffRun() {
    sim.settings.simulated_channels = {kDensity, kTemperature};
    sim.settings.sim_time = time;
    sim.settings.start_time = time;
  }
  void start() { sim.init_state(scene); }
  void frames(int n) {
    for (int i = 0; i < n; ++i) sim.update(scene, time, nullptr);
  }
  const IntBox& box() { return sim.settings.active_box; }
  // The density in domain cells.
  float density(const Vec3i& p) {
    if (!box().contains(p)) return 0;
    const Vec3i i = p - box().lo + Vec3i(1, 1, 1);
    return sim.channel_field(kDensity)->cpu_field()(i[0], i[1], i[2]);
  }

  Puff scene;
  Simulation3D sim;
  FrameTime time{{0, 1}, {1, 25}};
};

TEST(Container, HoldsTheContentAndNothingElse) {
  PuffRun run;
  run.scene.frames_of_source = 0;
  test::LogCapture log;
  run.start();
  run.frames(2);
  EXPECT_TRUE(run.box().empty());
  EXPECT_FALSE(log.contains("Adapting container")) << "nothing is there to hold";

  run.scene.frames_of_source = 1;
  run.frames(1);
  EXPECT_TRUE(run.box().contains({14, 10, 14}) && run.box().contains({17, 13, 17}));
  EXPECT_LT(run.box().size()[1], 12);
  run.frames(12);
  EXPECT_GT(run.box().hi[1], 18) << "the box rises with the gas";
  EXPECT_FALSE(run.box().empty());
  // The outermost cells inside of the box are free of content: nothing is cut off.
  const Health health = measure_health(run.sim);
  const IntBox content =
      min_bbox(run.sim.channel_field(kDensity)->cpu_field(), static_cast<float>(0.001));
  for (int a = 0; a < 3; ++a) {
    EXPECT_GT(content.lo[a], 1);
    EXPECT_LT(content.hi[a], run.box().size()[a]);
  }
  EXPECT_EQ(health.touches, (std::array<bool, 6>{}));
  EXPECT_GT(health.kinetic_energy, 0);
  EXPECT_LT(health.largest_divergence, 0.01 * 1.01);
}

TEST(Container, WallsAreReachedOnlyByContent) {
  PuffRun run;
  run.scene.floor = true;
  run.start();
  EXPECT_EQ(run.box().lo[1], 0) << "a closed face is in the box as soon as there is content";
  EXPECT_GT(run.box().lo[0], 0);

  PuffRun loose;
  loose.scene.floor = true;
  loose.scene.fit_to_walls = false;
  loose.start();
  EXPECT_GT(loose.box().lo[1], 0);

  PuffRun corner;
  corner.scene.at = {0, 0, 0};
  corner.start();
  corner.frames(1);
  EXPECT_EQ(corner.box().lo, Vec3i(0, 0, 0));
  const std::array<bool, 6> touched = measure_health(corner.sim).touches;
  EXPECT_TRUE(touched[0] && touched[2] && touched[4]);
  EXPECT_FALSE(touched[1] || touched[3] || touched[5]);
}

// Eight times the domain costs neither memory nor work: the box is the same, and so are the bits.
TEST(Container, EmptySpaceIsFree) {
  std::map<int, std::vector<float>> bits;
  for (int factor : {1, 2}) {
    PuffRun run;
    run.scene.domain = {32 * factor, 48 * factor, 32 * factor};
    run.scene.noise = 0.1;
    run.start();
    run.frames(8);
    EXPECT_LT(run.box().hi[0], 31) << "the puff reached the small domain's side";
    const Field<float>& d = run.sim.channel_field(kDensity)->cpu_field();
    bits[factor].assign(d.data(), d.data() + d.count());
  }
  EXPECT_EQ(bits[1], bits[2]);
}

// From one state of a rising puff, a run in a box that holds all air of some speed and a run in the
// whole domain. The box takes the air outside to be at rest, where it moves by less than the
// threshold: 0.2 cells in the four frames, where the gas itself moves by several: a few hundredths
// of what the gas does.
TEST(Container, FollowsWhatTheWholeDomainGives) {
  PuffRun seed;
  seed.scene.threshold = -1;  // every cell counts
  seed.start();
  seed.sim.apply_box(seed.sim.settings.domain_box);
  seed.frames(6);
  SimSettings all = seed.sim.settings;
  all.cached_channels = {kDensity, kTemperature, kVelocity, kSecondVelocity};
  SimFrame state;
  seed.sim.fill_frame(state, all, seed.time);

  PuffRun box, whole;
  whole.scene.threshold = -1;
  box.scene.speed_threshold = 0.05;
  for (PuffRun* run : {&box, &whole}) {
    run->scene.frames_of_source = 0;
    ASSERT_TRUE(run->sim.load_state(run->scene, state));
    run->frames(4);
  }
  EXPECT_EQ(whole.box(), whole.sim.settings.domain_box);
  EXPECT_LT(box.sim.channel_field(kDensity)->cpu_field().count(),
            whole.sim.channel_field(kDensity)->cpu_field().count() / 2);
  double difference = 0, mass = 0, moved = 0;
  for (int z = 0; z < 32; ++z)
    for (int y = 0; y < 48; ++y)
      for (int x = 0; x < 32; ++x) {
        const Vec3i p{x, y, z};
        difference += std::fabs(box.density(p) - whole.density(p));
        moved += std::fabs(seed.density(p) - whole.density(p));
        mass += whole.density(p);
      }
  EXPECT_GT(moved, 0.5 * mass);
  EXPECT_LT(difference, 0.02 * moved);
}

// Gas that expands makes room before it is pushed, and what leaves the cells that expand is what
// they gave.
TEST(Container, ExpansionGrowsTheBoxAndGivesItsVolume) {
  PuffRun still, boom;
  boom.scene.expansion = 40;  // per second: 1.6 times the cells' volume in a frame
  for (PuffRun* run : {&still, &boom}) {
    run->scene.frames_of_source = 2;
    run->start();
    run->frames(1);
  }
  for (int a = 0; a < 3; ++a) EXPECT_GT(boom.box().size()[a], still.box().size()[a]);

  // The flux through a box round the source: sum of the divergence of the cells within.
  const Vec3i origin = boom.box().lo - Vec3i(1, 1, 1);
  const IntBox round{boom.scene.at - Vec3i(2, 2, 2) - origin,
                     boom.scene.at + Vec3i(5, 5, 5) - origin};
  FluidSystem& fluid = boom.sim.fluid();
  double flux = 0;
  const auto face = [&](int axis, int side, double sign) {
    const Field<float>& f = fluid.component(axis).cpu_field();
    const int b = (axis + 1) % 3, c = (axis + 2) % 3;
    for (int u = round.lo[b]; u <= round.hi[b]; ++u)
      for (int v = round.lo[c]; v <= round.hi[c]; ++v) {
        Vec3i p;
        p[axis] = side;
        p[b] = u;
        p[c] = v;
        flux += sign * f(p[0], p[1], p[2]);
      }
  };
  for (int axis = 0; axis < 3; ++axis) {
    face(axis, round.lo[axis], -1);
    face(axis, round.hi[axis] + 1, 1);
  }
  const double given = 64 * 40 * boom.sim.settings.dx;
  EXPECT_NEAR(flux, given, 0.01 * given) << "the projection's tolerance is 0.01 per cell";
}

}  // namespace
}  // namespace nbx
