// Preparing a run: from a volume object to a simulation that stands at its first frame, or at the
// state that it goes on from.
#include <algorithm>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/run_checks.h"
#include "C4D/run/simulation_thread.h"
#include "C4D/run/workspace.h"
#include "C4D/services/host_access.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/scene_settings.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/settings/volume_grid.h"
#include "cache/bcf_format.h"
#include "math/field_pool.h"
#include "util/cuda_use_flags.h"
#include "util/exception.h"
#include "util/format_size.h"
#include "util/log.h"
#include "util/memory.h"
#include "util/whole_file.h"

namespace nbx {

namespace {

bool stands_in_document(host::BaseObject* first, const host::BaseObject* wanted) {
  for (host::BaseObject* object = first; object; object = object->GetNext())
    if (object == wanted || stands_in_document(object->GetDown(), wanted)) return true;
  return false;
}

host::BaseContainer text_record(const std::string& text) {
  host::BaseContainer record;
  record.SetString(1, text);
  return record;
}

}  // namespace

bool SimulationThread::prepare_sim(host::BaseObject* object, const host::C4DThread* render_thread) {
  render_thread_ = render_thread;
  running_ = frame_done_ = reached_end_ = false;
  failure_.clear();
  mem_stats();
  running_ = prepare(object);
  if (running_) return true;
  forget_scene();
  return false;
}

bool SimulationThread::give_up(const std::string& why, bool tell) {
  LogMessage() << why;
  failure_ = why;
  if (tell && !render_thread_) post_event(kSimulationEvent, kEventGaveUp);
  return false;
}

bool SimulationThread::prepare(host::BaseObject* object) {
  if (!object) return give_up("aborting prepare_sim: volobj = NULL", true);
  host::BaseDocument& document = object->GetDocument();
  if (!stands_in_document(document.GetFirstObject(), object))
    return give_up("Simulation aborted!", true);
  object_ = object;
  if (const std::string lock = what_locks(*object); !lock.empty())
    return give_up("the cache is locked: " + lock, true);
  field_pool().release_unused();
  block_pool().release_unused();
  make_simulation();
  if (!open_cache()) return give_up("Failed to create cache for sim", false);
  SimSettings& s = sim_->settings;
  read_run_settings(s, *object);
  if (!render_thread_) post_event(kSimulationEvent, kEventStarted, text_record(object->GetName()));

  emitters_ = std::make_unique<EmitterSampler>(*object);
  solids_ = std::make_unique<SolidSampler>(*object);
  source_tags_ = find_source_tags(document);
  if (s.simulated_channels.empty()) warn("no channel is simulated");
  if (source_tags_.empty()) warn("the scene has no enabled emitter tag");
  const TimeRange range = time_range(*object);
  const Fraction length = frame_length(document.GetFps());
  const auto at = [&length](const host::BaseTime& t) { return FrameTime{to_fraction(t), length}; };
  start_time_ = at(range.start);
  end_time_ = at(range.end);
  s.start_time = start_time_;
  s.frame_duration = start_time_.length.value();
  evaluate_at(range.start);

  const VolumeGrid grid = volume_grid(*object, s.voxel_size);
  if (const std::string wrong = what_is_wrong(grid); !wrong.empty()) throw Exception(wrong);
  s.domain_box = grid.box();
  s.world_to_grid = grid.world_to_grid;
  if (const std::string question = missing_memory(); !question.empty() && !ask(question))
    return give_up(render_thread_ ? question : "the user stopped the run, which needs more memory",
                   true);

  time_ = start_time_;
  const Origin origin = load_state();
  const bool goes_on = origin == Origin::kContinued;
  s.target_cache->recount_bytes(time_.frame());
  if (dialog_)
    dialog_->started({goes_on ? time_.frame() + 1 : time_.frame(), end_time_.frame(), grid.dims(),
                      s.target_cache->directory()});
  if (fraction_less(start_time_.time, time_.time)) pre_roll();
  evaluate_at(to_base_time(time_.time));
  finish_state(origin);
  if (goes_on) return true;
  if (origin == Origin::kAnew)
    sim_->start(*this, time_);
  else
    sim_->store_frame(time_, 0);
  if (dialog_) dialog_->frame_done(time_, *sim_);
  report_lost();
  return true;
}

void SimulationThread::make_simulation() {
  auto sim = std::make_shared<Simulation3D>();
  {
    const std::lock_guard lock(sim_lock_);
    sim_ = std::move(sim);
  }
  if (dialog_) set_device(cuda_use_flags(), dialog_->device());
}

bool SimulationThread::open_cache() {
  const std::shared_ptr<BFS> cache = sim_->settings.target_cache = volume_cache(*object_, true);
  if (!cache) return false;
  const ParameterReader p(*object_);
  cache->codec = p(OVOLUME.COMPRESS_CACHE) ? Codec::kPredictive : Codec::kRunLength;
  cache->sync = p(OVOLUME.CACHE_SYNC) ? Sync::kDisk : Sync::kNone;
  // The cache's own name must last too.
  if (cache->sync == Sync::kDisk) sync_folder(folder_of(cache->directory()));
  return true;
}

/// What the machine lacks for a run in a full domain, in a line; empty if nothing.
std::string SimulationThread::missing_memory() {
  const VolumeGrid grid = volume_grid(*object_, sim_->settings.voxel_size);
  const Vec3i n = grid.dims();
  const std::string domain = "a domain of " + std::to_string(n[0]) + " x " + std::to_string(n[1]) +
                             " x " + std::to_string(n[2]) + " voxels ";
  if ((n[0] + 3.0) * (n[1] + 3.0) * (n[2] + 3.0) > static_cast<double>(kBcfMaxCells))
    throw Exception(domain + "is more than a frame file can hold");
  const double need = workspace_bytes(sim_->settings, grid.cells, emitters_->has_solids());
  const std::uint64_t have = physical_memory();
  if (have == 0 || need <= static_cast<double>(have)) return {};
  const std::string size = format_size(static_cast<std::uint64_t>(std::min(need, 1e19)), 2);
  LogMessage() << "Maximum simulation workspace " << size << " too big for physical memory";
  return domain + "may need " + size + " of memory, this machine has " + format_size(have, 2);
}

bool SimulationThread::ask(const std::string& question) {
  if (render_thread_) return false;
  post_event(kSimulationEvent, kEventAsk, text_record(question));
  question_done_.acquire();
  return question_answer_ && !stop_now_;
}

}  // namespace nbx
