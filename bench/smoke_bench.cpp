// Whole frames of plain smoke at 128^3: density and temperature from a moving source in a closed
// box, all of it simulated, one step a frame, projected to the tolerance.
#include "bench/passes.h"
#include "simulation/simulation3d.h"

namespace nbx::bench {
namespace {

constexpr int kCells = 128;

class MovingSource : public SceneEvaluator {
 public:
  void read_settings(Simulation3D& sim, double) override {
    SimSettings& s = sim.settings;
    s.domain_box = {{0, 0, 0}, {kCells - 1, kCells - 1, kCells - 1}};
    s.face_closed = {0, 0, 1, 0, 0, 0};
    s.max_substeps = 1;
    s.dx = 0.02;
    s.frame_duration = 0.04;
    s.channel_params[kDensity].buoyancy = 0;
    s.channel_params[kDensity].box_threshold = -1;
  }
  void update_inputs(Simulation3D& sim, double) override {
    SparseField<float, 3> weights;
    const int x0 = 40 + ++frame_ % 40;
    for (int z = 56; z < 72; ++z)
      for (int y = 8; y < 20; ++y)
        for (int x = x0; x < x0 + 16; ++x)
          weights.hash_insert(x, y, z)
              .data[SparseField<float, 3>::voxel_index(x & 7, y & 7, z & 7)] = 1;
    SimulationObjectParameters object;
    object.amounts = {{kDensity, 1}, {kTemperature, 1}};
    sim.add_source_object(object, weights);
  }
  void update_solids(Simulation3D&, double) override {}

 private:
  int frame_ = 0;
};

void smoke_frame(benchmark::State& state) {
  MovingSource scene;
  field_pool().release_unused();
  const std::uint64_t before = field_bytes();
  Simulation3D sim;
  sim.settings.simulated_channels = {kDensity, kTemperature};
  FrameTime time{{0, 1}, {1, 25}};
  sim.settings.start_time = sim.settings.sim_time = time;
  sim.init_state(scene);
  sim.apply_box(sim.settings.domain_box);
  for (int i = 0; i < 20; ++i) sim.update(scene, time, nullptr);  // a plume to move

  const std::size_t cells = std::size_t{kCells} * kCells * kCells;
  int cycles = 0, frames = 0;
  float residual = 0;
  measure(state, cells, [&] {
    sim.update(scene, time, nullptr);
    cycles += sim.pressure().last_solve().cycles;
    residual = std::max(residual, sim.pressure().last_solve().residual);
    ++frames;
  });
  state.counters["residual"] = static_cast<double>(residual);
  state.counters["bytes_per_cell"] =
      static_cast<double>(field_bytes() - before) / static_cast<double>(cells);
  state.counters["cycles"] = static_cast<double>(cycles) / frames;
}
BENCHMARK(smoke_frame)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace nbx::bench
