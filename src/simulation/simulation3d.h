// A run of the simulation: the state of the gas, and the method that advances it.
//
// A run consists of four records (what the user set, the clock, the domain, where frames go) and of
// systems that hold the fields: the velocity, the pressure, four channels, and forces. `update`
// advances all of it by one frame, the unit of storage, in one or more substeps, the unit of
// integration. A substep is operator splitting: transport, sources, forces, projection.
//
// The scene is known through a SceneEvaluator alone, so a run needs no host:
//
//     Simulation3D sim;                    // set sim.params, sim.clock, sim.sink
//     FrameTime time = ...;
//     sim.start(scene, time);              // the first frame holds the sources of its instant
//     while (more) sim.update(scene, time, progress);
//
// With `params.upres` the velocity isn't simulated but read from `source_cache`, the frames of a
// coarser run (upres/upres_fluid.h). Such a run has phases of its own; transport, sources and
// combustion of the channels are the same.
//
// One thread calls all of it; the numeric operators use more threads inside.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "simulation/cusl_kernels3d.h"
#include "simulation/frame_sink.h"
#include "simulation/steps/force_systems.h"
#include "simulation/steps/pressure_system.h"
#include "simulation/steps/scalar_fluid_channel.h"
#include "simulation/upres/upres_fluid.h"
#include "util/stopwatch.h"

namespace nbx {

/// Seconds of one `update`, by stage.
struct StageTimes {
  double src = 0;  // sources from the scene
  double sol = 0;  // solids from the scene
  double res = 0;  // finding and applying the active box
  double beg = 0;  // hooks of all systems
  double pro = 0;  // decay, advection, combustion, diffusion of the channels
  double vel = 0;  // advection, forces, projection and detail of the velocity
  double sav = 0;  // storing the frame
  double dsk = 0;  // of that, waiting for the disk
  double out = 0;  // between the last `update` and this one
};

class Simulation3D final : private VelocityForce,
                           private FieldSource,
                           private CombustionSource,
                           private SolverProgress {
 public:
  // The driver of the run sets params, clock, sink and source_cache before the start, and
  // clock.sim_time between frames. Within `update`, and for `domain` always, only the run writes
  // them. `params.upres` stays as it is.
  SolverParams params;
  StepClock clock;
  Domain domain;
  FrameSink sink;
  std::shared_ptr<BFS> source_cache;  // of the coarse run, with `params.upres`

  Simulation3D() = default;
  ~Simulation3D() override = default;
  Simulation3D(const Simulation3D&) = delete;
  Simulation3D& operator=(const Simulation3D&) = delete;

  /// The records, for scenes and systems.
  RunView view() const { return {params, clock, domain}; }

  /// Brings a new run to its first frame, which holds the sources of that instant.
  void init_state(SceneEvaluator& scene);

  /// init_state, then stores the first frame. False if the frame could not be stored.
  bool start(SceneEvaluator& scene, const FrameTime& time);

  /// Continues from a stored frame, which must not be held by the target cache. False, with a log
  /// line, for a frame with less than 3 cells on an axis: the state then has the frame's time but
  /// no gas. Throws what reading the frame throws.
  bool load_state(SceneEvaluator& scene, SimFrame& frame);

  /// The state of the noise generator, which frames don't hold.
  NoiseState noise_state() const;
  /// After load_state: continues with this noise.
  void restore_noise(const NoiseState& state);
  /// The same without a saved state: the noise of a run that started at the simulation time
  /// `start`.
  void catch_up_noise(double start);

  /// Advances by one frame and stores it; `time` advances by its frame length. If `progress` (may
  /// be null) asks to stop, the call returns in mid-frame and keeps all state: `time` stays, and
  /// the next call continues with the next substep. Numeric failures throw; the state isn't rolled
  /// back.
  void update(SceneEvaluator& scene, FrameTime& time, SimProgress* progress);

  /// Hands the current state to the target cache as the frame of `time`; its writer saves it while
  /// the run continues. With `cache_direct` it is on disk before this returns. False, with a log
  /// line, without a target cache or if writing it directly failed.
  bool store_frame(const FrameTime& time, int substep);

  /// Puts the channels of these ChannelKeys into `frame`.
  void fill_frame(SimFrame& frame, const std::set<int>& channels, const FrameTime& time);

  /// Makes `box` the active box; all systems follow.
  void apply_box(const IntBox& box);

  /// The field of a simulated channel, which the caller may change between updates; null if there
  /// is none. For tests and displays.
  MField* channel_field(int key);
  FluidSystem& fluid() { return *fluid_; }
  PressureSystem& pressure() { return *pressure_; }

  /// Substeps left in a frame that was interrupted; 0 between frames.
  int steps_remaining() const { return steps_remaining_; }
  /// Times of the current `update`, or of the last one.
  const StageTimes& stage_times() const { return times_; }

 private:
  void setup();
  void reset_run();
  void begin_frame();
  void log_frame_line(double total);
  void read_settings(SceneEvaluator& scene);

  // A substep and its phases, in order.
  struct Phase;
  static std::span<const Phase> phases(bool upres);
  bool substep(SceneEvaluator& scene);
  void run_phase(const Phase& phase, SceneEvaluator& scene);
  void plan_step(SceneEvaluator& scene);
  void advect_channels(SceneEvaluator&);
  void advect_velocity(SceneEvaluator&);
  void take_sources(SceneEvaluator& scene);
  void grow_container(SceneEvaluator&);
  void finish_channels(SceneEvaluator&);
  void fit_container_to_expansion(SceneEvaluator&);
  void take_solids(SceneEvaluator& scene);
  void push_and_project(SceneEvaluator&);
  void end_substep();
  template <void (SimSystem::*hook)()>
  void call_hook(SceneEvaluator&) {
    call(hook);
  }
  void call(void (SimSystem::*hook)()) {
    for (auto& system : systems_) (system.get()->*hook)();
  }
  double choose_step();
  bool check(int k);
  bool abort_requested(int done, int total) override;

  void fit_container(const IntBox& wanted);
  void follow_source(SceneEvaluator&);
  void drop_unused_sources(SceneEvaluator&);
  IntBox with_sources_and_walls(const IntBox& content) const;
  IntBox expanded_box(MField& divergence) const;

  bool write_frame(const FrameTime& time, int substep);
  bool queue_frame(const FrameTime& time, int substep);

  void add_forces(FluidSystem& fluid, double dt) override;
  bool add_divergence(MField& target, double dt) override;
  void add_detail(FluidSystem& fluid) override;
  bool combustion(MField& target, int key) override;
  MField* get_field(int key) override;

  std::vector<std::unique_ptr<SimSystem>> systems_;  // in creation order, the order of every hook
  CuslKernels3D* fluid_ = nullptr;
  UpresFluid* upres_ = nullptr;  // the same, in an up-resolution run
  PressureSystem* pressure_ = nullptr;
  NoiseForceSystem* noise_ = nullptr;
  std::vector<ScalarFluidChannel*> channels_;
  std::vector<VelocityForce*> forces_;
  std::vector<CombustionSource*> combustion_sources_;
  std::vector<FrameStorable*> storables_;

  StepSources sources_{*this, domain};  // of this substep, until they are used up

  double remaining_time_ = 0;  // seconds left in this frame
  int steps_remaining_ = 0;
  int steps_per_frame_ = 1;  // estimate for the progress
  SimProgress* progress_ = nullptr;
  Stopwatch since_update_;  // since the last `update` ended
  StageTimes times_;
};

}  // namespace nbx
