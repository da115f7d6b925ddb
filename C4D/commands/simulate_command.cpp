#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include "C4D/commands/command_dialog.h"
#include "C4D/commands/command_options.h"
#include "C4D/commands/commands.h"
#include "C4D/commands/register_command.h"
#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/run_checks.h"
#include "C4D/run/simulation_thread.h"
#include "C4D/settings/scene_settings.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/settings/volume_grid.h"

namespace nbx {

namespace {

constexpr std::int32_t kStartSimulation = 1023994;
constexpr std::int32_t kContinueSimulation = 1027553;

std::string absolute(const std::string& path) {
  return QDir::cleanPath(QFileInfo(QString::fromStdString(path)).absoluteFilePath()).toStdString();
}

/// One run of the command, from the options to the exit code.
class Run {
 public:
  Run(const host::CommandArguments& arguments, host::CommandContext& context,
      host::BaseObject& volume)
      : arguments_(arguments),
        context_(context),
        volume_(volume),
        parameters_(volume.GetDataInstance()),
        subject_(volume.GetDocument().GetDocumentName() + ": volume \"" + volume.GetName() +
                 "\": ") {}

  int run() {
    if (!take_frames() || !take_state() || !scene_is_good() || !take_cache())
      return host::kBadInput;
    CommandDialog dialog(arguments_, context_, subject_);
    SimulationThread& thread = simulation_thread();
    std::optional<int> from;
    if (!arguments_.GetStrings("continue").empty()) from = arguments_.GetLong("continue");
    if (!thread.start_simulation(&volume_, arguments_.Has("continue"), dialog, from))
      return host::kFailed;
    wait(thread, dialog);
    return dialog.finish(thread.failure(), thread.reached_end());
  }

 private:
  bool wrong(const std::string& what) {
    context_.Error(subject_ + what);
    return false;
  }

  bool take_frames() {
    const auto& frames = arguments_.GetFrames("frames");
    if (frames.empty()) return true;
    const std::int32_t first = frames.front(), last = frames.back();
    if (static_cast<std::size_t>(last - first) + 1 != frames.size()) {
      context_.Error("--frames: a simulation runs through every frame: give FIRST-LAST");
      return false;
    }
    const host::FrameRate fps = volume_.GetDocument().GetFps();
    parameters_.SetLong(OVOLUME.TIME_MODE, OVOLUME_TIME_OWN_RANGE);
    parameters_.SetTime(OVOLUME.TIME_START, host::BaseTime::FromFrame(first, fps));
    parameters_.SetTime(OVOLUME.TIME_END, host::BaseTime::FromFrame(last, fps));
    return true;
  }

  bool take_state() {
    if (!arguments_.Has("start-from")) return true;
    const std::string path = absolute(arguments_.GetString("start-from"));
    if (arguments_.Has("continue")) return wrong("--continue and --start-from exclude each other");
    if (!QFileInfo(QString::fromStdString(path)).isFile())
      return wrong("--start-from: there is no file " + path);
    parameters_.SetBool(OVOLUME.LOAD_STATE, true);
    parameters_.SetFilename(OVOLUME.STATE_FILE, {path});
    return true;
  }

  /// Nothing is written before all of the scene is seen to be good.
  bool scene_is_good() {
    const double voxel_size = ParameterReader(volume_)(OVOLUME.VOXEL_SIZE);
    if (!(voxel_size > 0)) return wrong("voxel_size must be above 0");
    const TimeRange range = time_range(volume_);
    if (range.end < range.start) return wrong("the last frame lies before the first");
    host::BaseDocument& document = volume_.GetDocument();
    document.SetTime(range.start);
    document.ExecutePasses(nullptr, true, true, true);
    const std::string domain = what_is_wrong(volume_grid(volume_, voxel_size));
    return domain.empty() || wrong(domain);
  }

  /// A cache that is named or that is the scene's default is made here, so that its path is told.
  bool take_cache() {
    const std::string directory =
        arguments_.Has("cache") ? absolute(arguments_.GetString("cache")) : named_cache(volume_);
    if (directory.empty()) return true;  // the run makes a new one
    parameters_.SetFilename(OVOLUME.CACHE_NAME, {directory});
    if (const std::string shared = what_shares_cache(volume_); !shared.empty())
      return wrong(shared);
    if (!what_locks(volume_).empty()) return true;  // the start refuses, and nothing is made
    const QString folder = QString::fromStdString(directory);
    if (!QDir().mkpath(folder)) return wrong("the cache folder " + directory + " can't be made");
    QTemporaryFile probe(folder + "/XXXXXX.tmp");
    if (!probe.open())
      return wrong("the cache folder " + directory +
                   " can't be written: " + probe.errorString().toStdString());
    return true;
  }

  /// Until the thread has ended.
  void wait(SimulationThread& thread, CommandDialog& dialog) {
    for (bool finished = false; !finished;) {
      host::SpecialEvent event;
      if (!context_.WaitEvent(event)) {
        if (const int interrupts = context_.Interrupts()) thread.stop(interrupts > 1);
      } else if (event.id == kSimulationEvent) {
        if (event.code == kEventAsk) thread.answer(dialog.ask_to_go_on(event.record.GetString(1)));
        finished = event.code == kEventFinished;
      }
    }
    thread.End(true);
  }

  const host::CommandArguments& arguments_;
  host::CommandContext& context_;
  host::BaseObject& volume_;
  host::BaseContainer& parameters_;
  const std::string subject_;
};

class SimulateCommand : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    using host::CommonOption;
    using host::OptionType;
    return {.verb = "simulate",
            .help =
                "Runs the simulation of the scene's volume object; without --cache, the frames go "
                "where the scene says, or into the folder SCENE.OBJECT.cache beside it",
            .options = {{.name = "scene",
                         .value_name = "SCENE",
                         .help = "The scene document",
                         .positional = true,
                         .required = true},
                        {.name = "continue",
                         .type = OptionType::Long,
                         .value_name = "FRAME",
                         .help = "Goes on from the last state that the cache holds, or from the "
                                 "last one at or before FRAME; the frames before it stay",
                         .value_optional = true},
                        {.name = "start-from",
                         .value_name = "FILE",
                         .help = "Goes on from the state in a frame file"},
                        {.name = "overwrite",
                         .type = OptionType::Flag,
                         .help = "Simulates over the frames of an earlier run, also where "
                                 "--continue finds no state"},
                        {.name = "new-cache",
                         .type = OptionType::Flag,
                         .help = "Leaves an earlier run alone and makes a new cache beside it"},
                        {.name = "yes",
                         .type = OptionType::Flag,
                         .help = "Answers yes to all questions"}},
            .common = {CommonOption::Frames, CommonOption::Object, CommonOption::Cache,
                       CommonOption::Threads, CommonOption::Device, CommonOption::Set,
                       CommonOption::Fps, CommonOption::Force}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    if (!apply_machine_options(arguments, context)) return host::kBadInput;
    const auto document = context.LoadDocument({arguments.GetString("scene")});
    if (!document) return host::kBadInput;
    host::BaseObject* volume = context.FindObject(*document, kVolumeObject);
    return volume ? Run(arguments, context, *volume).run() : host::kBadInput;
  }
};

/// `simulate --continue` under a name of its own.
class ContinueCommand final : public SimulateCommand {
 public:
  host::CommandInfo GetInfo() const override {
    host::CommandInfo info = SimulateCommand::GetInfo();
    info.verb = "continue";
    info.help = "Goes on from where the last run of the scene's cache stopped: simulate --continue";
    std::erase_if(info.options, [](const host::OptionInfo& option) {
      return option.name == "continue" || option.name == "start-from" || option.name == "new-cache";
    });
    return info;
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    host::CommandArguments more = arguments;
    more.AddFlag("continue");
    return SimulateCommand::Execute(more, context);
  }
};

}  // namespace

bool register_simulate_command(host::HostServices& services, const std::string& name) {
  return register_command<SimulateCommand>(services, kStartSimulation, name);
}

bool register_continue_command(host::HostServices& services, const std::string& name) {
  return register_command<ContinueCommand>(services, kContinueSimulation, name);
}

}  // namespace nbx
