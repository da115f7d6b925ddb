#include "C4D/run/simulation_thread.h"

#include <omp.h>

#include "C4D/run/run_failure.h"
#include "C4D/services/host_access.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/scene_settings.h"
#include "math/field_pool.h"
#include "util/cuda_use_flags.h"
#include "util/log.h"

namespace nbx {

void SimulationThread::stop(bool at_once) {
  stop_at_frame_end_ = true;
  if (!at_once) return;
  stop_now_ = true;
  answer(false);
}

void SimulationThread::answer(bool yes) {
  question_answer_ = yes;
  question_done_.release();
}

std::shared_ptr<Simulation3D> SimulationThread::simulation() {
  const std::lock_guard lock(sim_lock_);
  return sim_;
}

void SimulationThread::Main() {
  omp_set_num_threads(dialog_->threads() > 0 ? dialog_->threads() : omp_get_num_procs());
  try {
    if (prepare_sim(object_link_, nullptr))
      while (running_ && !stop_at_frame_end_ && fraction_less(time_.time, end_time_.time)) step();
    reached_end_ = running_ && !fraction_less(time_.time, end_time_.time);
  } catch (...) {
    failure_ = run_failure();
    LogMessage() << failure_;
  }
  try {
    cleanup();
  } catch (...) {
    failure_ = run_failure();
    LogMessage() << failure_;
    post_event(kSimulationEvent, kEventFinished);
  }
}

bool SimulationThread::step() {
  if (!evaluate_at(to_base_time(time_.time))) stop(true);
  sim_->settings.sim_time.length = time_.length * time_scale(*object_);
  sim_->update(*this, time_, this);
  if (sim_->steps_remaining() > 0) return false;
  if (dialog_) dialog_->frame_done(time_, *sim_);
  report_lost();
  save_state_if_due();
  return true;
}

bool SimulationThread::progress(int done, int total) {
  if (dialog_) dialog_->progress(time_, *sim_, done, total);
  frame_done_ = done == total;
  if (evaluating_thread()->TestBreak()) stop(true);
  if (stop_at_frame_end_ && frame_done_) stop_now_ = true;
  return !stop_now_;
}

void SimulationThread::substep_done(const Simulation3D& sim) {
  if (dialog_) dialog_->substep_done(time_, sim);
}

void SimulationThread::report_lost() {
  if (dialog_) dialog_->frames_lost(sim_->settings.target_cache->take_lost_frames());
}

void SimulationThread::cleanup() {
  if (sim_ && sim_->settings.target_cache) {
    if (frame_done_) save_last_state();
    const Outcome saved = sim_->settings.target_cache->finish_writes();
    if (!saved && failure_.empty()) failure_ = "frames wait to be saved: " + saved.reason();
    report_lost();
  }
  {
    const std::lock_guard lock(sim_lock_);
    sim_.reset();
  }
  forget_scene();
  running_ = frame_done_ = false;
  field_pool().release_unused();
  LogMessage() << "SparseBlocks: " << block_pool().drop_unused().known;
  mem_stats();
  if (!render_thread_) post_event(kSimulationEvent, kEventFinished);
}

void SimulationThread::forget_scene() {
  object_ = nullptr;
  source_tags_.clear();
  emitters_.reset();
  solids_.reset();
  state_.reset();
  own_states_.clear();
  continued_from_.reset();
}

bool SimulationThread::evaluate_at(const host::BaseTime& time) {
  host::BaseDocument& document = object_->GetDocument();
  document.SetTime(time);
  return document.ExecutePasses(evaluating_thread(), true, true, true);
}

void SimulationThread::read_settings(Simulation3D& sim, double dt) {
  if (dialog_) set_device(cuda_use_flags(), dialog_->device());
  read_step_settings(sim.settings, *object_, dt);
}

void SimulationThread::update_inputs(Simulation3D& sim, double dt) {
  emitters_->update_inputs(sim, time_.time.value(), dt);
}

void SimulationThread::update_solids(Simulation3D& sim, double dt) {
  solids_->update_solids(sim, dt);
}

SimulationThread& simulation_thread() {
  static SimulationThread thread;
  return thread;
}

void stop_at_shutdown() {
  SimulationThread& thread = simulation_thread();
  if (!thread.IsRunning()) return;
  LogMessage() << "waiting for sim thread to terminate";
  thread.stop(true);
  thread.End(false);  // breaks off an evaluation of the document too
}

}  // namespace nbx
