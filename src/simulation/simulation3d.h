// One run: the settings, the systems that make up the simulation, and the order of a step.
//
// `update` advances the state by one frame in one or more substeps; a substep is a fixed sequence
// of hooks called on every system. The frame is the unit of storage, the substep that of
// integration. The scene is known through a SceneEvaluator alone, so a run needs no host:
//
//     Simulation3D sim;                    // fill sim.settings: domain, channels, where frames go
//     FrameTime time = ...;
//     sim.start(scene, time);              // the first frame holds the sources of its instant
//     while (more) sim.update(scene, time, progress);
//
// One thread runs all of it; parallelism lies inside of the numeric operators.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "simulation/cusl_kernels3d.h"
#include "simulation/pressure_system.h"
#include "simulation/scalar_fluid_channel.h"
#include "simulation/steps/noise_force_system.h"
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
  Simulation3D();
  ~Simulation3D() override;
  Simulation3D(const Simulation3D&) = delete;
  Simulation3D& operator=(const Simulation3D&) = delete;

  SimSettings settings;
  Solids solids;    // of this substep, set by SceneEvaluator::update_solids
  IntBox keep_box;  // must stay in the active box; set by SceneEvaluator::update_inputs

  /// Brings a new run to the start frame: the state holds the sources of that instant.
  void init_state(SceneEvaluator& scene);

  /// init_state, then stores the first frame. False if that frame could not be stored.
  bool start(SceneEvaluator& scene, const FrameTime& time);

  /// Goes on from a stored frame, which isn't one that is held in the target cache. False, with a
  /// log line, for a frame with less than 3 cells on an axis: the state is then that of its time,
  /// without gas. Throws what reading the frame throws.
  bool load_state(SceneEvaluator& scene, SimFrame& frame);

  /// Where the noise stands, which frames have no place for.
  NoiseState noise_state() const;
  /// After load_state: lets the noise go on from there.
  void restore_noise(const NoiseState& state);
  /// The same without such a state: as in a run that began at `start`, a time of the simulation,
  /// and has come to the state's.
  void catch_up_noise(double start);

  /// Advances by one frame and stores it; `time` moves on by its frame length. When `progress` (may
  /// be null) says stop, the call returns in mid-frame with all state kept: `time` stays, and the
  /// next call goes on with the next substep. Numeric failures throw; the state isn't rolled back.
  void update(SceneEvaluator& scene, FrameTime& time, SimProgress* progress);

  /// Hands the current state to the target cache as the frame of `time`; its writer saves it while
  /// the run goes on. With `cache_direct` it is on disk before this returns. False, with a log
  /// line, without a target cache or if writing it directly failed.
  bool store_frame(const FrameTime& time, int substep);

  /// Puts the whole state into `frame`: every channel in `stored.cached_channels`.
  void fill_frame(SimFrame& frame, const SimSettings& stored, const FrameTime& time);

  /// Takes one source object's part of the current substep. Doesn't change `weights`.
  void add_source_object(const SimulationObjectParameters& parameters,
                         const SparseField<float, 3>& weights);

  /// Velocity that the scene gives in this substep, in simulation units per second, by the faces of
  /// each axis: face (i, j, k) lies before cell (i, j, k) of the domain. Filled by
  /// SceneEvaluator::update_inputs, and used up by the forces of the substep.
  std::array<SparseField<float, 3>*, 3> velocity_sources() {
    return {&u_sources_, &v_sources_, &w_sources_};
  }

  /// Makes `box` the active box; all systems follow.
  void apply_box(const IntBox& box);

  /// The field of a simulated channel; null if there is none. For tests and displays.
  MField* channel_field(int key) { return get_field(key); }
  FluidSystem& fluid() { return *fluid_; }
  PressureSystem& pressure() { return *pressure_; }

  /// Substeps left in a frame that was interrupted; 0 between frames.
  int steps_remaining() const { return steps_remaining_; }
  /// Of the current `update`, or of the last one.
  const StageTimes& stage_times() const { return times_; }
  /// Frames that `update` could not store so far; those that the cache lost later don't count.
  int frames_not_stored() const { return frames_not_stored_; }

 private:
  void setup();
  void reset_run();
  void begin_frame();
  bool substep(SceneEvaluator& scene);
  bool write_frame(const FrameTime& time, int substep);
  bool queue_frame(const FrameTime& time, int substep);
  double choose_step();
  void adapt(double dt, const IntBox& wanted, bool grow_only, bool skip_reach);
  void adapt_to_expansion();
  IntBox expanded_box(MField& divergence) const;
  void clear_sources();
  void add_expansion(double amount, const SparseField<float, 3>& weights);
  bool check(int k);
  void log_frame_line(double total);

  void add_forces(FluidSystem& fluid, double dt) override;
  bool add_divergence(MField& target, double dt) override;
  void add_detail(FluidSystem& fluid) override;
  void combustion(MField& target, int key) override;
  MField* get_field(int key) override;
  bool abort_requested(int done, int total) override;

  std::mutex mutex_;                                 // guards setup and the sources
  std::vector<std::unique_ptr<SimSystem>> systems_;  // in creation order, the order of every hook
  CuslKernels3D* fluid_ = nullptr;
  PressureSystem* pressure_ = nullptr;
  NoiseForceSystem* noise_ = nullptr;
  std::vector<ScalarFluidChannel*> channels_;
  std::vector<FieldSource*> field_sources_;
  std::vector<VelocityForce*> forces_;
  std::vector<CombustionSource*> combustion_sources_;
  std::vector<FrameStorable*> storables_;

  SparseField<float, 3> divergence_sources_;  // volume that sources give in this substep
  SparseField<float, 3> u_sources_, v_sources_, w_sources_;  // velocity that they give

  double remaining_time_ = 0;  // seconds left in this frame
  double step_limit_ = 1;
  int steps_remaining_ = 0;
  int steps_per_frame_ = 1;  // estimate for the progress
  int frames_not_stored_ = 0;
  SimProgress* progress_ = nullptr;
  Stopwatch since_update_;  // since the last `update` ended
  StageTimes times_;
};

}  // namespace nbx
