#include <algorithm>
#include <charconv>
#include <deque>

#include <omp.h>

#include "C4D/commands/command_run.h"
#include "C4D/commands/commands.h"
#include "C4D/commands/register_command.h"
#include "C4D/commands/run_options.h"
#include "C4D/parameters/volume_parameters.h"
#include "util/cuda_use_flags.h"

namespace nbx {

namespace {

constexpr std::int32_t kStartSimulation = 1023994;
constexpr std::int32_t kContinueSimulation = 1027553;
constexpr std::int32_t kUpResolution = 1027554;

/// Applies --threads and --device. False, after an error, if there is no such device.
bool apply_machine_options(const host::CommandArguments& arguments, host::CommandContext& context) {
  if (arguments.Has("threads")) omp_set_num_threads(arguments.GetLong("threads"));

  const std::string name = arguments.GetString("device", "cpu");
  int device = -1;
  if (name != "cpu") {
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), device);
    if (error != std::errc() || end != name.data() + name.size() || device < 0) {
      context.Error("--device: \"" + name + "\" is neither cpu nor the number of a device");
      return false;
    }
    int count = 0;
    if (cuda::get_device_count(&count) != cuda::kSuccess) count = 0;
    if (device >= count) {
      context.Error("--device: there is no device " + name + ", this machine has " +
                    std::to_string(count));
      return false;
    }
  }
  set_device(cuda_use_flags(), device);
  return true;
}

/// An option that names one volume or its files, which --all excludes. Empty if there is none.
std::string excluded_by_all(const host::CommandArguments& arguments) {
  for (const char* option : {"object", "cache"})
    if (arguments.Has(option)) return std::string("--") + option;
  const std::string from = arguments.GetString("start-from");
  return from.empty() || as_frame(from) ? "" : "--start-from FILE";
}

/// The volumes to simulate, in the order of the tree. None after an error.
std::vector<host::BaseObject*> choose_volumes(host::BaseDocument& document,
                                              const host::CommandArguments& arguments,
                                              host::CommandContext& context) {
  const bool all = arguments.Has("all");
  const std::vector<host::BaseObject*> volumes = find_volumes(document, all);
  const std::string scene = document.GetDocumentName() + ": ";
  if (all) {
    if (volumes.empty()) context.Error(scene + "--all: the scene has no enabled volume object");
    return volumes;
  }
  if (volumes.size() > 1 && !arguments.Has("object")) {
    std::string names;
    for (const host::BaseObject* volume : volumes)
      names += (names.empty() ? "\"" : ", \"") + volume->GetName() + "\"";
    context.Error(scene + "there are " + std::to_string(volumes.size()) + " volume objects, " +
                  names + ": give --object NAME to simulate one, or --all");
    return {};
  }
  host::BaseObject* const volume = context.FindObject(document, kVolumeObject);
  return volume ? std::vector{volume} : std::vector<host::BaseObject*>();
}

/// Checks all volumes before the first is simulated. The exit code is the worst of all runs; an
/// interrupt ends the series.
int simulate(const std::vector<host::BaseObject*>& volumes, const host::CommandArguments& arguments,
             host::CommandContext& context) {
  std::deque<CommandRun> runs;
  for (host::BaseObject* volume : volumes) runs.emplace_back(arguments, context, *volume);
  for (const auto step : {&CommandRun::check, &CommandRun::make_cache}) {
    bool good = true;
    for (CommandRun& run : runs) good = (run.*step)() && good;
    if (!good) return host::kBadInput;
  }
  int worst = host::kDone;
  for (CommandRun& run : runs) {
    if (&run != &runs.front() && context.Interrupts() > 0) return host::kInterrupted;
    worst = std::max(worst, run.run());
  }
  return worst;
}

class SimulateCommand : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    using host::CommonOption;
    using host::OptionType;
    return {.verb = "simulate",
            .help =
                "Simulates the volume object of a scene, or several with --all. Without --cache, "
                "the frames go into the cache that the scene names, or into the folder "
                "SCENE.OBJECT.cache next to it",
            .options = {{.name = "scene",
                         .value_name = "SCENE",
                         .help = "The scene document",
                         .positional = true,
                         .required = true},
                        {.name = "continue",
                         .type = OptionType::Long,
                         .value_name = "FRAME",
                         .help = "Continue from the last state in the cache, or from the last one "
                                 "at or before FRAME; the frames before it stay",
                         .value_optional = true},
                        {.name = "start-from",
                         .value_name = "FRAME|FILE",
                         .help = "Continue from a frame of the cache: from its state if there is "
                                 "one, else from the channels that the cache stores. Or start from "
                                 "the state in a frame file (./10 is a file, 10 is a frame)"},
                        {.name = "upres",
                         .type = OptionType::Flag,
                         .help = "Add detail to the finished run in the cache: its motion on a "
                                 "grid that is upres_factor times finer. The frames go into the "
                                 "folder with \" upres\" after its name"},
                        {.name = "overwrite",
                         .type = OptionType::Flag,
                         .help = "Replace the frames of an earlier run, also if --continue finds "
                                 "no state"},
                        {.name = "new-cache",
                         .type = OptionType::Flag,
                         .help = "Keep an earlier run, and make a new cache SCENE.OBJECT.001 next "
                                 "to it; with --continue or --start-from it shares the frames "
                                 "before the run"},
                        {.name = "all",
                         .type = OptionType::Flag,
                         .help = "Simulate every enabled volume object, one after the other, each "
                                 "into its own cache"},
                        {.name = "yes",
                         .type = OptionType::Flag,
                         .help = "Answer yes to questions. A run that would keep only a part of an "
                                 "earlier one needs --overwrite"}},
            .common = {CommonOption::Frames, CommonOption::Object, CommonOption::Cache,
                       CommonOption::Threads, CommonOption::Device, CommonOption::Set,
                       CommonOption::Fps, CommonOption::Force}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    if (!apply_machine_options(arguments, context)) return host::kBadInput;
    if (const std::string other = excluded_by_all(arguments);
        arguments.Has("all") && !other.empty()) {
      context.Error("--all and " + other + " can't be used together");
      return host::kBadInput;
    }
    const auto document = context.LoadDocument({arguments.GetString("scene")});
    if (!document) return host::kBadInput;
    const std::vector<host::BaseObject*> volumes = choose_volumes(*document, arguments, context);
    return volumes.empty() ? host::kBadInput : simulate(volumes, arguments, context);
  }
};

/// `simulate --continue` as a command of its own.
class ContinueCommand final : public SimulateCommand {
 public:
  host::CommandInfo GetInfo() const override {
    host::CommandInfo info = SimulateCommand::GetInfo();
    info.verb = "continue";
    info.help = "Continues the last run in the cache of a scene, as simulate --continue does";
    std::erase_if(info.options, [](const host::OptionInfo& option) {
      return option.name == "continue" || option.name == "start-from";
    });
    return info;
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    host::CommandArguments more = arguments;
    more.AddFlag("continue");
    return SimulateCommand::Execute(more, context);
  }
};

/// `simulate --upres` as a command of its own.
class UpresCommand final : public SimulateCommand {
 public:
  host::CommandInfo GetInfo() const override {
    host::CommandInfo info = SimulateCommand::GetInfo();
    info.verb = "upres";
    info.help = "Adds detail to the finished run in the cache of a scene, as simulate --upres does";
    std::erase_if(info.options,
                  [](const host::OptionInfo& option) { return option.name == "upres"; });
    return info;
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    host::CommandArguments more = arguments;
    more.AddFlag("upres");
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

bool register_upres_command(host::HostServices& services, const std::string& name) {
  return register_command<UpresCommand>(services, kUpResolution, name);
}

}  // namespace nbx
