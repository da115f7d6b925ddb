#include "C4D/run/simulation_run.h"

#include <algorithm>

#include <omp.h>

#include "C4D/run/coarse_run.h"
#include "C4D/run/domain_checks.h"
#include "C4D/run/run_cache.h"
#include "C4D/run/run_checks.h"
#include "C4D/run/scene_warnings.h"
#include "C4D/run/state_loader.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/scene_settings.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/settings/volume_grid.h"
#include "cache/cache_registry.h"
#include "math/field_pool.h"
#include "util/cuda_use_flags.h"
#include "util/format_size.h"
#include "util/log.h"

namespace nbx {

Outcome SimulationRun::prepare() {
  omp_set_num_threads(front_end_.threads() > 0 ? front_end_.threads() : omp_get_num_procs());
  thread_waiting_.emplace();
  mem_stats();
  const Outcome prepared = prepare_in_order();
  if (!prepared) LogMessage() << prepared.reason();
  return prepared;
}

// Where the front end wants to stop now, the run is left unprepared, which is no failure.
Outcome SimulationRun::prepare_in_order() {
  // The user may have removed or locked the volume since the start.
  if (Outcome can = check_can_run(volume_, is_upres()); !can) return can;
  // Fields of an earlier run must not take memory from this one, and new ones live on the device.
  make_simulation();
  // A run without a place for its frames ends before it costs anything.
  sim_->sink.target_cache = open_run_cache(*volume_);
  if (!sim_->sink.target_cache) return Outcome::failure("Failed to create cache for sim");
  front_end_.opened(volume_->GetName());
  // Channels and voxel size, which everything after this depends on.
  sim_->params.upres = is_upres();
  read_run_settings(sim_->params, sim_->sink, *volume_);
  // The tags that are enabled before the document moves are those of the whole run.
  open_scene();
  // The domain may be animated: it is that of the start.
  if (!scene_->evaluate_at(to_base_time(times_.start.time))) return Outcome::success();
  // The size of the domain decides about memory, so it comes before the first field.
  if (Outcome fits = take_domain(); !fits) return fits;
  warn_of_scene();

  // The gas of a state gives the time that the run begins at.
  StateLoader state(std::move(origin_), {*scene_, *sim_, times_, front_end_, *stale_});
  state.load();
  report_start(state.continued());
  // The scene follows the gas to that time. Only then it can be compared with the state's.
  if (!step_to_state()) return Outcome::success();
  state.finish(*states_);
  mark_later_frames(state.continued());
  // The first frame needs all of it. A run that continues has it already.
  if (!state.continued()) store_first_frame(state.is_new());
  prepared_ = true;
  return Outcome::success();
}

void SimulationRun::make_simulation() {
  field_pool().release_unused();
  block_pool().release_unused();
  auto sim = std::make_shared<Simulation3D>();
  {
    const std::lock_guard lock(sim_lock_);
    sim_ = std::move(sim);
  }
  cuda_use_flags().use_gpu = true;
  if (const auto device = front_end_.device()) set_device(cuda_use_flags(), *device);
  if (!is_upres()) return;
  set_device(cuda_use_flags(), -1);
  sim_->source_cache = getCache(source_);
}

void SimulationRun::open_scene() {
  times_ = run_times(*volume_);
  if (origin_.start) times_.now.time = times_.start.time = *origin_.start;
  if (is_upres()) {
    limit_to_coarse_run(times_, source_);
    LogMessage() << "upres using lo_voxel_size = " << coarse_voxel_edge(source_);
  }
  sim_->clock.frame_duration = times_.start.length.value();
  scene_.emplace(*volume_, times_, front_end_);
  stale_.emplace(*sim_->sink.target_cache);
  states_.emplace(RunParts{*scene_, *sim_, times_, front_end_, *stale_});
}

// A run that adds to another has had its warnings, and the coarse run those of its scene.
void SimulationRun::warn_of_scene() {
  if (is_upres()) {
    const std::string missing = missing_in_coarse_run(times_, source_);
    if (!missing.empty())
      front_end_.warn(source_ + " lacks " + missing +
                      ": there the gas keeps the velocity of the frame before");
  } else if (!origin_.state) {
    for (const SceneWarning& warning : scene_warnings(*volume_, &front_end_))
      front_end_.warn(warning.text);
  }
}

Outcome SimulationRun::take_domain() {
  if (Outcome possible = check_domain(*volume_, sim_->params); !possible) return possible;
  voxels_ = run_grid(*volume_, sim_->params).dims();
  const RunMemory memory = run_memory(sim_->params, sim_->sink, *volume_, scene_->has_solids());
  if (memory.exceeds_machine()) {
    LogMessage() << "Maximum simulation workspace "
                 << format_size(static_cast<std::uint64_t>(std::min(memory.need, 1e19)), 2)
                 << " too big for physical memory";
    if (!front_end_.may_exceed_memory(memory.text)) return Outcome::failure(memory.text);
  } else if (memory.exceeds_free()) {
    front_end_.warn(memory.text);
  }
  return Outcome::success();
}

void SimulationRun::report_start(bool continued) {
  BFS& cache = *sim_->sink.target_cache;
  const int now = times_.now.frame();
  cache.recount_bytes(now);
  front_end_.started({continued ? now + 1 : now, times_.end.frame(), voxels_, cache.directory()});
}

void SimulationRun::mark_later_frames(bool continued) {
  const int first = times_.now.frame() + (continued ? 1 : 0);
  if (const Outcome marked = stale_->begin(first); !marked)
    front_end_.warn("the later frames of the earlier run can't be marked: " + marked.reason());
  note_ = {first, NBX_VERSION, 0, 0};
  CacheNotes notes = read_cache_notes(sim_->sink.target_cache->directory());
  notes.begin(note_);
  write_notes(notes);
}

void SimulationRun::write_notes(const CacheNotes& notes) {
  const std::string directory = sim_->sink.target_cache->directory();
  if (const Outcome written = write_cache_notes(directory, notes); !written)
    front_end_.warn("the notes of the cache can't be written: " + written.reason());
}

/// Forecasts go by it.
void SimulationRun::note_cost() {
  CacheNotes notes = read_cache_notes(sim_->sink.target_cache->directory());
  if (note_.seconds == 0 || notes.runs.empty() || notes.runs.back().first != note_.first) return;
  notes.runs.back() = note_;
  write_notes(notes);
}

bool SimulationRun::step_to_state() {
  if (fraction_less(times_.start.time, times_.now.time) &&
      !scene_->pre_roll(sim_->params.voxel_size))
    return false;
  return scene_->evaluate_at(to_base_time(times_.now.time));
}

void SimulationRun::store_first_frame(bool with_sources) {
  if (with_sources)
    sim_->start(*scene_, times_.now);
  else
    sim_->store_frame(times_.now, 0);
  report_frame();
}

bool SimulationRun::step() {
  // If the evaluation is broken off, the update ends at its first check.
  scene_->evaluate_at(to_base_time(times_.now.time));
  sim_->clock.sim_time.length = times_.now.length * time_scale(*volume_);
  sim_->update(*scene_, times_.now, this);
  if (sim_->steps_remaining() > 0) return false;
  report_frame();
  states_->save_if_due();
  return true;
}

bool SimulationRun::has_next() const {
  return prepared_ && !times_.at_end() && front_end_.wanted_stop() == Stop::kNo;
}

bool SimulationRun::progress(int done, int total) {
  front_end_.progress(times_.now, *sim_, done, total);
  frame_done_ = done == total;
  const Stop stop = front_end_.wanted_stop();
  return stop == Stop::kNo || (stop == Stop::kAtFrameEnd && !frame_done_);
}

void SimulationRun::substep_done(const Simulation3D& sim) {
  front_end_.substep_done(times_.now, sim);
}

void SimulationRun::report_frame() {
  const StageTimes& t = sim_->stage_times();
  note_.seconds += t.src + t.sol + t.res + t.beg + t.pro + t.vel + t.sav;
  note_.substeps += sim_->clock.step_index;
  front_end_.frame_done(times_.now, *sim_);
  report_lost();
  // A mark that stays says too much, which is harmless; the next frame's update tries again.
  stale_->stored(times_.now.frame());
  static_cast<void>(stale_->update());
}

void SimulationRun::report_lost() {
  front_end_.frames_lost(sim_->sink.target_cache->take_lost_frames());
}

Outcome SimulationRun::finish() {
  thread_waiting_.reset();
  Outcome saved = Outcome::success();
  if (sim_ && sim_->sink.target_cache) {
    if (const Outcome written = sim_->sink.target_cache->finish_writes(); !written)
      saved = Outcome::failure("frames wait to be saved: " + written.reason());
    // Before the state, which counts only if the frame that it belongs to isn't marked.
    if (const Outcome marked = stale_ ? stale_->end() : Outcome::success(); saved && !marked)
      saved = Outcome::failure("the mark of stale frames can't be written: " + marked.reason());
    if (frame_done_) states_->save_last();
    if (frame_done_) note_cost();
    report_lost();
  }
  states_.reset();
  stale_.reset();
  scene_.reset();
  {
    const std::lock_guard lock(sim_lock_);
    sim_.reset();
  }
  field_pool().release_unused();
  LogMessage() << "SparseBlocks: " << block_pool().drop_unused().known;
  mem_stats();
  return saved;
}

std::shared_ptr<Simulation3D> SimulationRun::simulation() {
  const std::lock_guard lock(sim_lock_);
  return sim_;
}

}  // namespace nbx
