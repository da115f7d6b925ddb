#include "C4D/commands/command_run.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include "C4D/commands/console_front_end.h"
#include "C4D/commands/run_options.h"
#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/run_checks.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/settings/volume_grid.h"

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

CommandRun::CommandRun(const host::CommandArguments& arguments, host::CommandContext& context,
                       host::BaseObject& volume)
    : arguments_(arguments),
      context_(context),
      volume_(volume),
      parameters_(volume.GetDataInstance()),
      subject_(volume_subject(volume)) {}

int CommandRun::run() {
  // Nothing is written before the whole scene is known to be good.
  Outcome good = take_frames(arguments_, volume_);
  if (good) good = take_state();
  if (good) good = check_domain_and_range(volume_);
  if (good) good = take_cache();
  if (!good) {
    context_.Error(subject_ + good.reason());
    return host::kBadInput;
  }
  ConsoleFrontEnd front_end(arguments_, context_, subject_);
  SimulationThread& thread = *simulation_thread();
  std::optional<int> from;
  if (!arguments_.GetStrings("continue").empty()) from = arguments_.GetLong("continue");
  if (!thread.start_simulation(&volume_, arguments_.Has("continue"), front_end, from))
    return host::kFailed;
  try {
    wait(thread, front_end);
  } catch (...) {  // the thread uses the front end
    thread.stop(true);
    thread.End(true);
    throw;
  }
  return front_end.finish(thread.outcome(), thread.reached_end());
}

Outcome CommandRun::take_state() {
  if (!arguments_.Has("start-from")) return Outcome::success();
  const std::string path = absolute_path(arguments_.GetString("start-from"));
  if (arguments_.Has("continue"))
    return Outcome::failure("--continue and --start-from exclude each other");
  if (!QFileInfo(QString::fromStdString(path)).isFile())
    return Outcome::failure("--start-from: there is no file " + path);
  parameters_.SetBool(OVOLUME.LOAD_STATE, true);
  parameters_.SetFilename(OVOLUME.STATE_FILE, {path});
  return Outcome::success();
}

/// A cache with a known place is made here, so that errors name its path.
Outcome CommandRun::take_cache() {
  const std::string directory = set_cache(arguments_, volume_);
  if (directory.empty()) return Outcome::success();  // the run makes a new one
  if (Outcome own = check_own_cache(volume_); !own) return own;
  if (!check_unlocked(volume_)) return Outcome::success();  // start_simulation refuses
  return check_writable(directory);
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
