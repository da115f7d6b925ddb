#include "C4D/commands/command_run.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>
#include <charconv>

#include "C4D/commands/console_front_end.h"
#include "C4D/commands/run_options.h"
#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/coarse_run.h"
#include "C4D/run/domain_checks.h"
#include "C4D/run/earlier_run.h"
#include "C4D/run/run_checks.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"

namespace nbx {

namespace {

/// Makes the folder if it is missing.
Outcome check_writable(const std::string& directory) {
  const QString folder = QString::fromStdString(directory);
  const std::string subject = "the cache folder " + directory;
  if (!QDir().mkpath(folder)) return Outcome::failure(subject + " can't be made");
  QTemporaryFile probe(folder + "/XXXXXX.tmp");
  if (probe.open()) return Outcome::success();
  return Outcome::failure(subject + " can't be written: " + probe.errorString().toStdString());
}

}  // namespace

std::optional<int> as_frame(const std::string& start_from) {
  int frame = 0;
  const char* const end = start_from.data() + start_from.size();
  const auto [stopped, error] = std::from_chars(start_from.data(), end, frame);
  if (error != std::errc() || stopped != end) return {};
  return frame;
}

CommandRun::CommandRun(const host::CommandArguments& arguments, host::CommandContext& context,
                       host::BaseObject& volume)
    : arguments_(arguments),
      context_(context),
      volume_(volume),
      parameters_(volume.GetDataInstance()),
      subject_(volume_subject(volume)) {}

bool CommandRun::check() {
  if (const Outcome frames = take_frames(arguments_, volume_); !frames) return refuse(frames);
  for (const auto step :
       {&CommandRun::take_start, &CommandRun::check_scene, &CommandRun::take_cache,
        &CommandRun::take_source, &CommandRun::check_start})
    if (const Outcome good = (this->*step)(); !good) return refuse(good);
  return true;
}

bool CommandRun::refuse(const Outcome& why) const {
  context_.Error(subject_ + why.reason());
  return false;
}

/// A cache with a known place is made here, so that errors name its path.
bool CommandRun::make_cache() {
  const std::string directory = named_cache(volume_);
  if (directory.empty()) return true;                                   // the run makes a new one
  if (!check_unlocked(volume_, !request_.source.empty())) return true;  // start_simulation refuses
  const Outcome made = check_writable(directory);
  return made || refuse(made);
}

int CommandRun::run() {
  ConsoleFrontEnd front_end(arguments_, context_, subject_);
  SimulationThread& thread = *simulation_thread();
  const std::string before = named_cache(volume_);
  if (!thread.start_simulation(&volume_, request_, front_end))
    return front_end.skipped() ? host::kDone : host::kFailed;
  try {
    wait(thread, front_end);
  } catch (...) {  // the thread uses the front end
    thread.stop(true);
    thread.End(true);
    throw;
  }
  const int code = front_end.finish(thread.outcome(), thread.reached_end());
  if (const std::string cache = named_cache(volume_); !before.empty() && cache != before)
    context_.Result("the earlier run stays in " + before + "; to render the new one, give " +
                    cache_option(cache));
  return code;
}

/// The option that shows a cache. --cache is for scenes with one volume.
std::string CommandRun::cache_option(const std::string& cache) const {
  const bool one_of_several = arguments_.Has("all") || arguments_.Has("object");
  return one_of_several ? "--set '" + volume_.GetName() + ".cache_name=" + cache + "'"
                        : "--cache " + cache;
}

Outcome CommandRun::take_start() {
  if (arguments_.Has("continue")) request_.from = RunRequest::From::kState;
  if (!arguments_.GetStrings("continue").empty()) request_.frame = arguments_.GetLong("continue");
  if (!arguments_.Has("start-from")) return Outcome::success();
  if (arguments_.Has("continue"))
    return Outcome::failure("--continue and --start-from can't be used together");
  const std::string from = arguments_.GetString("start-from");
  request_.frame = as_frame(from);
  if (request_.frame) {
    request_.from = RunRequest::From::kFrame;
    return Outcome::success();
  }
  if (arguments_.Has("upres"))
    return Outcome::failure("--start-from: with --upres, give the number of a frame");
  const std::string path = absolute_path(from);
  if (!QFileInfo(QString::fromStdString(path)).isFile())
    return Outcome::failure("--start-from: there is no file " + path);
  parameters_.SetBool(OVOLUME.LOAD_STATE, true);
  parameters_.SetFilename(OVOLUME.STATE_FILE, {path});
  return Outcome::success();
}

/// Nothing is written before the whole scene is known to be good.
Outcome CommandRun::check_scene() {
  if (Outcome possible = check_domain_and_range(volume_); !possible) return possible;
  if (arguments_.Has("yes") || arguments_.Has("force")) return Outcome::success();
  const RunMemory memory = run_memory(volume_, arguments_.Has("upres"));
  return memory.exceeds_machine() ? Outcome::failure(memory.text + "; --force tries it anyway")
                                  : Outcome::success();
}

Outcome CommandRun::take_cache() {
  return set_cache(arguments_, volume_).empty() ? Outcome::success() : check_own_cache(volume_);
}

/// With --upres, the cache is that of the coarse run, and the frames go into another.
Outcome CommandRun::take_source() {
  if (!arguments_.Has("upres")) return Outcome::success();
  request_.source = take_upres_cache(volume_);
  return check_coarse_run(volume_, request_.source);
}

/// --start-from with the number of a frame.
Outcome CommandRun::check_start() {
  if (request_.from != RunRequest::From::kFrame) return Outcome::success();
  const std::string subject = "--start-from " + std::to_string(*request_.frame) + ": ";
  const std::int64_t last = time_range(volume_).end.GetFrame(volume_.GetDocument().GetFps());
  if (*request_.frame >= last)
    return Outcome::failure(subject + "the range ends at frame " + std::to_string(last) +
                            ": give --frames with a later end");
  const Outcome there = check_start_frame(volume_, *request_.frame);
  return there ? there : Outcome::failure(subject + there.reason());
}

/// Returns when the thread has ended.
void CommandRun::wait(SimulationThread& thread, RunFrontEnd& front_end) {
  for (bool finished = false; !finished;) {
    host::SpecialEvent event;
    if (!context_.WaitEvent(event)) {
      if (const int interrupts = context_.Interrupts()) thread.stop(interrupts > 1);
    } else if (event.id == kSimulationEvent) {
      if (event.code == kEventAsk)
        thread.answer(front_end.may_exceed_memory(event.record.GetString(1)));
      finished = event.code == kEventFinished;
    }
  }
  thread.End(true);
}

}  // namespace nbx
