// A substep as the list of its phases, and their loop.
#include <algorithm>
#include <cmath>

#include "simulation/simulation3d.h"
#include "util/thread_limit.h"

namespace nbx {

struct Simulation3D::Phase {
  int tenth;  // of the substep on the progress bar: the run may stop where a new tenth begins
  void (Simulation3D::*run)(SceneEvaluator& scene);
  double StageTimes::*seconds;  // where its time is counted; null: nowhere
};

// A substep is operator splitting of first order.
std::span<const Simulation3D::Phase> Simulation3D::phases(bool upres) {
  using S = Simulation3D;
  using T = StageTimes;
  static constexpr Phase kPhases[] = {
      // The CFL limit gives dt, the scene its parameters and a change of wind.
      {0, &S::plan_step, nullptr},
      {0, &S::call_hook<&SimSystem::begin_step>, &T::beg},

      // Transport: the channels decay and move along the velocity, all by one trace of it. Then the
      // velocity moves along itself.
      {1, &S::call_hook<&SimSystem::prepare_advection>, &T::beg},
      {2, &S::advect_channels, &T::pro},
      {2, &S::call_hook<&SimSystem::after_channel_advection>, &T::beg},
      {3, &S::advect_velocity, &T::vel},
      {4, &S::call_hook<&SimSystem::after_velocity_advection>, &T::beg},

      // Sources come in, once the active box holds them; the gas burns and spreads.
      {5, &S::take_sources, &T::src},
      {6, &S::grow_container, &T::res},
      {7, &S::finish_channels, &T::pro},
      {7, &S::call_hook<&SimSystem::after_sources>, &T::beg},

      // The active box makes room for what the projection will push.
      {8, &S::fit_container_to_expansion, &T::res},

      // Forces act, and the pressure makes the velocity free of divergence, around solids too.
      {8, &S::take_solids, &T::sol},
      {9, &S::push_and_project, &T::vel},
  };
  static constexpr Phase kUpresPhases[] = {
      {0, &S::plan_step, nullptr},

      // The coarse frame gives the active box and, scaled up and with detail, the velocity.
      {0, &S::follow_source, &T::res},
      {0, &S::call_hook<&SimSystem::begin_step>, &T::beg},

      // The channels move as in any run.
      {1, &S::call_hook<&SimSystem::prepare_advection>, &T::beg},
      {2, &S::advect_channels, &T::pro},
      {2, &S::call_hook<&SimSystem::after_channel_advection>, &T::beg},

      // Sources come in, as far as they lie in the box; the gas burns and spreads.
      {5, &S::take_sources, &T::src},
      {7, &S::finish_channels, &T::pro},
      {7, &S::call_hook<&SimSystem::after_sources>, &T::beg},
      {8, &S::drop_unused_sources, nullptr},
  };
  if (upres) return kUpresPhases;
  return kPhases;
}

// One substep. False if the progress asked to stop.
bool Simulation3D::substep(SceneEvaluator& scene) {
  Stopwatch watch;
  int tenth = -1;
  for (const Phase& phase : phases(params.upres)) {
    if (phase.tenth != tenth && !check(phase.tenth)) return false;
    tenth = phase.tenth;
    run_phase(phase, scene);
    const double seconds = watch.lap();
    if (phase.seconds) times_.*phase.seconds += seconds;
  }
  // A solve that was stopped leaves a velocity that must not become a frame.
  if (pressure_->last_solve().end == SolveEnd::kAborted) return false;
  end_substep();
  return true;
}

// What the scene computes grows with its meshes, not with the box: it gets all threads.
void Simulation3D::run_phase(const Phase& phase, SceneEvaluator& scene) {
  if (phase.seconds == &StageTimes::src || phase.seconds == &StageTimes::sol)
    return (this->*phase.run)(scene);
  const Vec3i n = domain.active_box.size();
  const ThreadLimit limit(threads_worth(1.0 * n[0] * n[1] * n[2]));
  (this->*phase.run)(scene);
}

void Simulation3D::plan_step(SceneEvaluator& scene) {
  clock.dt = choose_step();
  read_settings(scene);
}

// Plans the substeps left in the frame, all of equal length, by the CFL limit. The frame always
// ends within max_substeps: the limit gives way, not the frame.
double Simulation3D::choose_step() {
  const double frame_length = clock.sim_time.length.value();
  const double limit = params.max_substeps >= 2 ? fluid_->max_step() : frame_length;
  const auto steps = [](double duration, double step, int most) {
    const double n = std::max(std::ceil(duration / step), 1.0);
    return n < most ? static_cast<int>(n) : most;
  };
  const int left = std::max(params.max_substeps - clock.step_index, 1);
  steps_remaining_ = steps(remaining_time_, limit, left);
  const double step = remaining_time_ / steps_remaining_;
  steps_per_frame_ = steps(frame_length, step, std::max(params.max_substeps, 1));
  return step;
}

void Simulation3D::advect_channels(SceneEvaluator&) {
  for (ScalarFluidChannel* channel : channels_) channel->decay_and_advect(*fluid_, *this);
}

void Simulation3D::advect_velocity(SceneEvaluator&) { fluid_->advect_velocity(); }

void Simulation3D::take_sources(SceneEvaluator& scene) {
  sources_.keep_box = {};
  sources_.world_to_grid = domain.world_to_grid;
  scene.update_inputs(view(), sources_, clock.dt);
  domain.world_to_grid = sources_.world_to_grid;
}

// Nothing pushes the gas of an up-resolution run.
void Simulation3D::drop_unused_sources(SceneEvaluator&) { sources_.clear(); }

void Simulation3D::finish_channels(SceneEvaluator&) {
  for (ScalarFluidChannel* channel : channels_)
    channel->finish_step(*this, *this, sources_.channel(channel->key()));
}

void Simulation3D::take_solids(SceneEvaluator& scene) {
  const Solids solids = scene.update_solids(view(), clock.dt);
  if (!solids.phi) return;
  for (auto& system : systems_) system->set_solids(solids);
}

void Simulation3D::push_and_project(SceneEvaluator&) {
  fluid_->update(clock.dt, *pressure_, *this, *this);
}

void Simulation3D::end_substep() {
  call(&SimSystem::end_step);
  sources_.divergence().clear();
  mem_stats();
  clock.step_index += 1;
  steps_remaining_ -= 1;
  remaining_time_ -= clock.dt;
  clock.frame_elapsed += clock.dt;
  if (progress_) progress_->substep_done(*this);
}

bool Simulation3D::check(int k) {
  const int i = clock.step_index;
  return !progress_ || progress_->progress(10 * i + k, 10 * (steps_remaining_ + i));
}

// The cycles of the solver fill the bar within the current substep.
bool Simulation3D::abort_requested(int done, int total) {
  const int i = clock.step_index;
  return progress_ && !progress_->progress(done + i * total, total * (steps_remaining_ + i));
}

}  // namespace nbx
