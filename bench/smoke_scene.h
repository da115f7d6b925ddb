// A run of plain smoke for benchmarks: density and temperature from a moving source in a box of
// 128^3 voxels with a floor. All of it is simulated, with one substep per frame.
#pragma once

#include "simulation/simulation3d.h"

namespace nbx::bench {

inline constexpr int kSmokeCells = 128;

class MovingSource : public SceneEvaluator {
 public:
  /// The same domain and source with voxels that are `coarseness` times larger.
  explicit MovingSource(int coarseness = 1) : coarseness_(coarseness) {}

  StepSettings read_settings(const RunView& run, double) override {
    StepSettings s{run.params, run.domain};
    s.domain.domain_box = {{0, 0, 0}, Vec3i(1, 1, 1) * (kSmokeCells / coarseness_ - 1)};
    s.domain.face_closed = {0, 0, 1, 0, 0, 0};
    s.domain.dx = 0.02 * coarseness_;
    s.params.max_substeps = 1;
    s.params.channel_params[kDensity].buoyancy = 0;
    s.params.channel_params[kDensity].box_threshold = -1;
    return s;
  }
  void update_inputs(const RunView&, StepSources& sources, double) override {
    SparseField<float, 3> weights;
    const int c = coarseness_, x0 = (40 + ++frame_ % 40) / c;
    for (int z = 56 / c; z < 72 / c; ++z)
      for (int y = 8 / c; y < 20 / c; ++y)
        for (int x = x0; x < x0 + 16 / c; ++x)
          weights.hash_insert(x, y, z)
              .data[SparseField<float, 3>::voxel_index(x & 7, y & 7, z & 7)] = 1;
    SimulationObjectParameters object;
    object.amounts = {{kDensity, 1}, {kTemperature, 1}};
    sources.add_source_object(object, weights);
  }
  Solids update_solids(const RunView&, double) override { return {}; }

 private:
  const int coarseness_;
  int frame_ = 0;
};

/// A plume after `frames` frames.
struct SmokeRun {
  explicit SmokeRun(int frames, int coarseness = 1, std::shared_ptr<BFS> cache = {})
      : scene(coarseness) {
    sim.sink = {std::move(cache), false, {kVelocity}};
    sim.params.simulated_channels = {kDensity, kTemperature};
    sim.clock.sim_time = time;
    sim.clock.frame_duration = 0.04;
    sim.init_state(scene);
    sim.apply_box(sim.domain.domain_box);
    for (int i = 0; i < frames; ++i) sim.update(scene, time, nullptr);
  }

  MovingSource scene;
  FrameTime time{{0, 1}, {1, 25}};
  Simulation3D sim;
};

}  // namespace nbx::bench
