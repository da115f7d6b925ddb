// Runs of small scenes: one object that fills a box of cells.
#pragma once

#include <functional>

#include "simulation/simulation3d.h"
#include "support/support.h"

namespace nbx::test {

using Sparse = SparseField<float, 3>;

/// Tests set what their scene has, before the run or between its frames.
class BoxScene : public SceneEvaluator {
 public:
  Vec3i domain{16, 16, 16};
  IntBox source;
  int frames_of_source = 1 << 30;
  SimulationObjectParameters object;
  std::function<void(SimSettings&)> settings;
  std::function<void(Simulation3D&)> solids = [](Simulation3D&) {};
  std::vector<double> steps;  ///< dt of each call of read_settings

  void read_settings(Simulation3D& sim, double dt) override {
    sim.settings.domain_box = {{0, 0, 0}, domain - Vec3i(1, 1, 1)};
    sim.settings.max_substeps = 1;
    sim.settings.dx = 0.05;
    sim.settings.frame_duration = 0.04;
    sim.settings.channel_params[kDensity].buoyancy = 0;
    settings(sim.settings);
    steps.push_back(dt);
  }
  void update_inputs(Simulation3D& sim, double) override {
    if (frames_of_source-- <= 0) return;
    Sparse weights;
    each_cell(source.size(), 0, [&](int x, int y, int z) {
      voxel(weights, source.lo[0] + x, source.lo[1] + y, source.lo[2] + z) = 1;
    });
    sim.add_source_object(object, weights);
  }
  void update_solids(Simulation3D& sim, double) override { solids(sim); }
};

/// Gives the run solids: `phi(i, j, k)` of its cells, which move with `u` along x.
template <class Phi>
void set_solids(Simulation3D& sim, Phi phi, float u) {
  const auto field = [&](int axis) {
    Vec3i n = sim.settings.active_box.size() + Vec3i(2, 2, 2);
    if (axis < 3) ++n[axis];
    auto made = std::make_shared<MField>(kCpu, n);
    each_cell(n, 0, [&](int i, int j, int k) {
      made->cpu_field()(i, j, k) = axis == 3 ? phi(i, j, k) : axis == 0 ? u : 0;
    });
    return made;
  };
  sim.solids = {field(3), field(0), field(1), field(2)};
}

struct BoxRun {
  BoxRun() {
    sim.settings.simulated_channels = {kDensity, kTemperature};
    sim.settings.cached_channels = {kDensity, kTemperature, kVelocity, kSecondVelocity};
    sim.settings.sim_time = sim.settings.start_time = time;
    scene.object.amounts = {{kDensity, 1}, {kTemperature, 1}};
  }
  void start() { sim.init_state(scene); }
  void frames(int count) {
    for (int i = 0; i < count; ++i) sim.update(scene, time, nullptr);
  }
  const Field<float>& channel(int key) { return sim.channel_field(key)->cpu_field(); }

  BoxScene scene;
  Simulation3D sim;
  FrameTime time{{0, 1}, {1, 25}};
};

}  // namespace nbx::test
