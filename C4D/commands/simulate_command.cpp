#include <charconv>

#include <omp.h>

#include "C4D/commands/command_run.h"
#include "C4D/commands/commands.h"
#include "C4D/commands/register_command.h"
#include "C4D/parameters/volume_parameters.h"
#include "util/cuda_use_flags.h"

namespace nbx {

namespace {

constexpr std::int32_t kStartSimulation = 1023994;
constexpr std::int32_t kContinueSimulation = 1027553;

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

class SimulateCommand : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    using host::CommonOption;
    using host::OptionType;
    return {.verb = "simulate",
            .help =
                "Simulates the volume object of a scene. Without --cache, the frames go into the "
                "cache that the scene names, or into the folder SCENE.OBJECT.cache next to it",
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
                         .value_name = "FILE",
                         .help = "Start from the state in a frame file"},
                        {.name = "overwrite",
                         .type = OptionType::Flag,
                         .help = "Replace the frames of an earlier run, also if --continue finds "
                                 "no state"},
                        {.name = "new-cache",
                         .type = OptionType::Flag,
                         .help = "Keep an earlier run, and make a new cache next to it"},
                        {.name = "yes",
                         .type = OptionType::Flag,
                         .help = "Answer yes to all questions. To start over when --continue finds "
                                 "no state, give --overwrite"}},
            .common = {CommonOption::Frames, CommonOption::Object, CommonOption::Cache,
                       CommonOption::Threads, CommonOption::Device, CommonOption::Set,
                       CommonOption::Fps, CommonOption::Force}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    if (!apply_machine_options(arguments, context)) return host::kBadInput;
    const auto document = context.LoadDocument({arguments.GetString("scene")});
    if (!document) return host::kBadInput;
    host::BaseObject* volume = context.FindObject(*document, kVolumeObject);
    return volume ? CommandRun(arguments, context, *volume).run() : host::kBadInput;
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
