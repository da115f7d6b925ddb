#include "C4D/simulation_driver.h"

#include <QDir>
#include <QTemporaryFile>

#include "C4D/host_conversion.h"
#include "C4D/run_failure.h"
#include "C4D/scene_settings.h"
#include "C4D/volume_grid.h"
#include "C4D/volume_parameters.h"
#include "C4D/workspace.h"
#include "cache/bcf_format.h"
#include "cache/cache_registry.h"
#include "util/format_size.h"
#include "util/log.h"

namespace nbx {

RunRange run_range(const host::BaseObject& volume) {
  const host::BaseDocument& document = volume.GetDocument();
  const host::BaseContainer& p = volume.GetDataInstance();
  host::BaseTime first = document.GetLoopMinTime(), last = document.GetLoopMaxTime();
  switch (p.GetLong(OVOLUME_TIME_MODE, OVOLUME_TIME_PREVIEW_RANGE)) {
    case OVOLUME_TIME_DOCUMENT_RANGE:
      first = document.GetMinTime();
      last = document.GetMaxTime();
      break;
    case OVOLUME_TIME_OWN_RANGE:
      first = p.GetTime(OVOLUME_TIME_START, {0, 1});
      last = p.GetTime(OVOLUME_TIME_END, {3, 1});
      break;
    default:
      break;
  }
  const std::int32_t fps = document.GetFps();
  return {static_cast<int>(first.GetFrame(fps)), static_cast<int>(last.GetFrame(fps))};
}

SimulationDriver::SimulationDriver(host::BaseObject& volume, const RunRange& range,
                                   std::string directory, host::CommandContext& context)
    : volume_(volume),
      document_(volume.GetDocument()),
      range_(range),
      directory_(std::move(directory)),
      context_(context),
      time_(frame_time(range.first, document_.GetFps())),
      report_(context, range.last - range.first + 1) {}

host::ExitCode SimulationDriver::run() {
  const host::BaseTime before = document_.GetTime();
  host::ExitCode code = host::kBadInput;
  mem_stats();
  try {
    if (prepare()) {
      simulate();
      code = finish();
    }
  } catch (...) {
    const std::string line = run_failure();
    LogMessage() << line;
    context_.Error("the run failed after " + std::to_string(report_.frames_done()) +
                   " frames: " + line);
    code = host::kFailed;
  }
  emitters_.reset();
  solids_.reset();
  sim_.reset();
  field_pool().release_unused();
  block_pool().release_unused();
  document_.SetTime(before);
  document_.ExecutePasses(nullptr, true, true, true);
  mem_stats();
  return code;
}

/// Nothing is written, and no memory taken, before all of the scene is seen to be good.
bool SimulationDriver::prepare() {
  if (!(volume_.GetDataInstance().GetReal(OVOLUME_VOXEL_SIZE, 1) > 0))
    return refuse("voxel_size must be above 0");
  if (range_.first > range_.last)
    return refuse("the last frame, " + std::to_string(range_.last) + ", lies before the first, " +
                  std::to_string(range_.first));
  document_.SetTime(host::BaseTime::FromFrame(range_.first, document_.GetFps()));
  document_.ExecutePasses(nullptr, true, true, true);

  sim_ = std::make_unique<Simulation3D>();
  SimSettings& s = sim_->settings;
  read_run_settings(s, volume_);
  s.frame_duration = time_.length.value();
  s.start_time = time_;
  s.sim_time = {time_.time * time_scale(volume_), time_.length * time_scale(volume_)};
  if (s.simulated_channels.empty()) context_.Warning("no channel is simulated");
  if (!domain_fits()) return false;

  emitters_ = std::make_unique<EmitterSampler>(volume_);
  solids_ = std::make_unique<SolidSampler>(volume_);
  if (emitters_->tags() == 0) context_.Warning("the scene has no enabled emitter tag");
  if (!open_cache()) return false;

  const Vec3i dims = volume_grid(volume_, s.voxel_size).dims();
  context_.Event("start", {{"first", std::int64_t{range_.first}},
                           {"last", std::int64_t{range_.last}},
                           {"voxels", std::vector<double>(dims.v.begin(), dims.v.end())},
                           {"directory", directory_}});
  return true;
}

bool SimulationDriver::domain_fits() {
  const VolumeGrid grid = volume_grid(volume_, sim_->settings.voxel_size);
  if (const std::string wrong = what_is_wrong(grid); !wrong.empty()) return refuse(wrong);
  const Vec3i n = grid.dims();
  const std::string domain = "a domain of " + std::to_string(n[0]) + " x " + std::to_string(n[1]) +
                             " x " + std::to_string(n[2]) + " voxels ";
  const std::string cure = ": make voxel_size larger or size smaller";
  const double need = workspace_bytes(sim_->settings, grid.cells);
  if (const std::uint64_t have = physical_memory(); have > 0 && need > static_cast<double>(have)) {
    const std::string size = format_size(static_cast<std::uint64_t>(std::min(need, 1e19)), 2);
    LogMessage() << "Maximum simulation workspace " << size << " too big for physical memory";
    return refuse(domain + "needs " + size + " of memory, this machine has " +
                  format_size(have, 2) + cure);
  }
  if ((n[0] + 3.0) * (n[1] + 3.0) * (n[2] + 3.0) > static_cast<double>(kBcfMaxCells))
    return refuse(domain + "is more than a frame file can hold" + cure);
  return true;
}

bool SimulationDriver::open_cache() {
  const QString folder = QString::fromStdString(directory_);
  if (!QDir().mkpath(folder)) return refuse("the cache folder " + directory_ + " can't be made");
  QTemporaryFile probe(folder + "/XXXXXX.tmp");
  auto cache = getCache(directory_);
  if (!probe.open() || !cache)
    return refuse("the cache folder " + directory_ +
                  " can't be written: " + probe.errorString().toStdString());
  if (const auto old = cache->frames(); !old.empty())
    context_.Note("the cache holds " + std::to_string(old.size()) +
                  " frames of an earlier run: those that are simulated anew are replaced");
  sim_->settings.target_cache = std::move(cache);
  return true;
}

void SimulationDriver::simulate() {
  sim_->start(*this, time_);
  report_frame();
  while (time_.frame() < range_.last && context_.Interrupts() == 0) {
    document_.SetTime(host::BaseTime::FromFrame(time_.frame(), document_.GetFps()));
    document_.ExecutePasses(nullptr, true, true, true);
    sim_->settings.sim_time.length = time_.length * time_scale(volume_);
    sim_->update(*this, time_, this);
    if (sim_->steps_remaining() > 0) return;  // stopped within the frame
    report_frame();
  }
}

host::ExitCode SimulationDriver::finish() {
  BFS& cache = *sim_->settings.target_cache;
  const bool saved = cache.finishWrites();
  report_.lost(cache.takeLostFrames());
  if (!saved) context_.Error("frames wait to be saved: " + cache.lastError());
  const bool interrupted = report_.frames_done() < range_.last - range_.first + 1;
  const host::ExitCode code = interrupted                           ? host::kInterrupted
                              : report_.frames_lost() > 0 || !saved ? host::kFailed
                                                                    : host::kDone;
  const int stored = report_.frames_done() - report_.frames_lost();
  const char* const end = interrupted ? "interrupted" : "done";
  context_.Event("end", {{"outcome", std::string(end)},
                         {"frames", std::int64_t{report_.frames_done()}},
                         {"stored", std::int64_t{stored}},
                         {"seconds", report_.seconds()}});
  context_.Result(std::string(end) + ": " + std::to_string(stored) + " frames in " + directory_ +
                  report_.losses());
  return code;
}

bool SimulationDriver::refuse(const std::string& why) {
  context_.Error(document_.GetDocumentName() + ": volume \"" + volume_.GetName() + "\": " + why);
  return false;
}

void SimulationDriver::report_frame() {
  report_.frame(time_.frame(), *sim_);
  report_.lost(sim_->settings.target_cache->takeLostFrames());
}

void SimulationDriver::read_settings(Simulation3D& sim, double dt) {
  read_step_settings(sim.settings, volume_, dt);
}

void SimulationDriver::update_inputs(Simulation3D& sim, double dt) {
  emitters_->update_inputs(sim, time_.time.value(), dt);
}

void SimulationDriver::update_solids(Simulation3D& sim, double dt) {
  solids_->update_solids(sim, dt);
}

void SimulationDriver::substep_done(const Simulation3D& sim) {
  report_.substep(time_.frame(), sim);
}

bool SimulationDriver::progress(int done, int total) {
  if (done < total)
    report_.step(time_.frame(), sim_->settings, sim_->steps_remaining(), done, total);
  return context_.Interrupts() < 2;
}

}  // namespace nbx
