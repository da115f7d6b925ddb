// Runs of small scenes: one object that fills a box of cells.
#pragma once

#include <functional>

#include "simulation/records.h"
#include "simulation/simulation3d.h"
#include "support/support.h"

namespace nbx::test {

using Sparse = SparseField<float, 3>;

/// Tests set what their scene has, before the run or between its frames.
class BoxScene : public SceneEvaluator {
 public:
  Vec3i cells{16, 16, 16};  ///< of the domain
  IntBox source, keep;
  int frames_of_source = 1 << 30;
  SimulationObjectParameters object;
  std::function<void(StepSettings&)> settings;
  std::function<Solids(const RunView&)> solids = [](const RunView&) { return Solids(); };
  std::vector<double> steps;  ///< dt of each call of read_settings

  StepSettings read_settings(const RunView& run, double dt) override {
    StepSettings step{run.params, run.domain};
    step.domain.domain_box = {{0, 0, 0}, cells - Vec3i(1, 1, 1)};
    step.domain.dx = 0.05;
    step.params.max_substeps = 1;
    step.params.channel_params[kDensity].buoyancy = 0;
    settings(step);
    steps.push_back(dt);
    return step;
  }
  void update_inputs(const RunView&, StepSources& sources, double) override {
    sources.keep_box = box_union(sources.keep_box, keep);
    if (frames_of_source-- <= 0) return;
    Sparse weights;
    each_cell(source.size(), 0, [&](int x, int y, int z) {
      voxel(weights, source.lo[0] + x, source.lo[1] + y, source.lo[2] + z) = 1;
    });
    sources.add_source_object(object, weights);
  }
  Solids update_solids(const RunView& run, double) override { return solids(run); }
};

/// Solids of distance `phi(i, j, k)` in the cells of the run, which move with `u` along x.
template <class Phi>
Solids make_solids(const Domain& domain, Phi phi, float u) {
  const auto field = [&](int axis) {
    const Vec3i n = axis < 3 ? domain.face_dims(axis) : domain.center_dims();
    auto made = std::make_shared<MField>(kCpu, n);
    each_cell(n, 0, [&](int i, int j, int k) {
      made->write_cpu()(i, j, k) = axis == 3 ? phi(i, j, k) : axis == 0 ? u : 0;
    });
    return made;
  };
  return {field(3), field(0), field(1), field(2)};
}

struct BoxRun {
  BoxRun() {
    sim.params.simulated_channels = {kDensity, kTemperature};
    sim.sink.cached_channels = {kDensity, kTemperature, kVelocity, kSecondVelocity};
    sim.clock.sim_time = time;
    sim.clock.frame_duration = 0.04;
    scene.object.amounts = {{kDensity, 1}, {kTemperature, 1}};
  }
  void start() { sim.init_state(scene); }
  void frames(int count) {
    for (int i = 0; i < count; ++i) sim.update(scene, time, nullptr);
  }
  const Field<float>& channel(int key) { return sim.channel_field(key)->read_cpu(); }

  BoxScene scene;
  Simulation3D sim;
  FrameTime time{{0, 1}, {1, 25}};
};

}  // namespace nbx::test
