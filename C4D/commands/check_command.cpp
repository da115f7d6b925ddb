#include "C4D/commands/commands.h"
#include "C4D/commands/register_command.h"
#include "C4D/commands/run_options.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/domain_checks.h"
#include "C4D/run/run_checks.h"
#include "C4D/run/run_times.h"
#include "C4D/run/scene_warnings.h"
#include "util/format_size.h"

namespace nbx {

namespace {

constexpr std::int32_t kCheckCommand = 1024001;

/// What a user wants to know before a run.
struct RunFacts {
  FrameTime first, last;
  VolumeGrid grid;
  double bytes = 0;
  std::string directory;  // of the frames; empty if the run makes a new one

  /// "41 frames (0 to 40), 80 x 60 x 80 voxels, up to 90.5MB of memory, cache /scenes/a.gas.cache"
  std::string text() const;
};

std::string RunFacts::text() const {
  const int from = first.frame(), to = last.frame();
  const Vec3i n = grid.dims();
  return std::to_string(to - from + 1) + (from == to ? " frame (" : " frames (") +
         std::to_string(from) + (from == to ? "" : " to " + std::to_string(to)) + "), " +
         std::to_string(n[0]) + " x " + std::to_string(n[1]) + " x " + std::to_string(n[2]) +
         " voxels, up to " + format_size(static_cast<std::uint64_t>(std::min(bytes, 1e19)), 2) +
         " of memory, cache " + (directory.empty() ? "in a new folder" : directory);
}

/// Adds what would stop `simulate` before its first frame.
RunFacts read_facts(host::BaseObject& volume, std::vector<SceneWarning>& warnings) {
  const RunTimes times = run_times(volume);
  const RunMemory memory = run_memory(volume);
  const VolumeGrid grid = volume_grid(volume, ParameterReader(volume)(OVOLUME.VOXEL_SIZE));
  if (memory.exceeds_machine() || memory.exceeds_free())
    warnings.push_back({volume.GetName(), "voxel_size", memory.text});
  if (const Outcome unlocked = check_unlocked(volume); !unlocked)
    warnings.push_back({volume.GetName(), "cache_lock",
                        "the cache is locked: " + unlocked.reason() +
                            ": unlock it, or name another with --cache"});
  return {times.start, times.end, grid, memory.need, {}};
}

/// The checks of a scene, volume by volume.
class SceneCheck {
 public:
  SceneCheck(const host::CommandArguments& arguments, host::CommandContext& context)
      : arguments_(arguments), context_(context) {}

  /// False, after an error, if the volume can't be simulated.
  bool check(host::BaseObject& volume) {
    const std::string subject = volume_subject(volume);
    Outcome good = take_frames(arguments_, volume);
    if (good) good = check_domain_and_range(volume);
    const std::string directory = set_cache(arguments_, volume);
    if (good) good = check_own_cache(volume);
    if (!good) {
      context_.Error(subject + good.reason());
      return false;
    }
    std::vector<SceneWarning> warnings = scene_warnings(volume);
    RunFacts facts = read_facts(volume, warnings);
    facts.directory = directory;
    report(subject, volume, facts, warnings);
    return true;
  }

  int finish() {
    context_.Event("end", {{"outcome", std::string(warnings_ == 0 ? "done" : "failed")},
                           {"warnings", std::int64_t{warnings_}}});
    return warnings_ == 0 ? host::kDone : host::kFailed;
  }

 private:
  void report(const std::string& subject, const host::BaseObject& volume, const RunFacts& facts,
              const std::vector<SceneWarning>& warnings) {
    const Vec3d n = facts.grid.cells;
    context_.Event("volume", {{"object", volume.GetName()},
                              {"first", std::int64_t{facts.first.frame()}},
                              {"last", std::int64_t{facts.last.frame()}},
                              {"voxels", std::vector<double>(n.v.begin(), n.v.end())},
                              {"memory_bytes", facts.bytes},
                              {"directory", facts.directory}});
    for (const SceneWarning& warning : warnings) {
      context_.Result(subject + warning.text);
      context_.Event("warning", {{"object", warning.object},
                                 {"parameter", warning.parameter},
                                 {"text", subject + warning.text}});
    }
    if (warnings.empty()) context_.Result(subject + "no problems found: " + facts.text());
    warnings_ += static_cast<int>(warnings.size());
  }

  const host::CommandArguments& arguments_;
  host::CommandContext& context_;
  int warnings_ = 0;
};

class CheckCommand {
 public:
  host::CommandInfo GetInfo() const {
    using host::CommonOption;
    return {.verb = "check",
            .help =
                "Reports what is wrong with a scene without simulating it: emitters that give "
                "nothing, parameters without effect, gas that pictures don't show. Exit code 1 if "
                "there is anything. Without --object it checks every enabled volume",
            .options = {{.name = "scene",
                         .value_name = "SCENE",
                         .help = "The scene document",
                         .positional = true,
                         .required = true}},
            .common = {CommonOption::Frames, CommonOption::Object, CommonOption::Cache,
                       CommonOption::Set, CommonOption::Fps}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) {
    const auto document = context.LoadDocument({arguments.GetString("scene")});
    if (!document) return host::kBadInput;
    std::vector<host::BaseObject*> volumes;
    if (!arguments.Has("object")) volumes = find_volumes(*document, true);
    if (volumes.empty()) volumes.push_back(context.FindObject(*document, kVolumeObject));
    SceneCheck check(arguments, context);
    for (host::BaseObject* volume : volumes)
      if (!volume || !check.check(*volume)) return host::kBadInput;
    return check.finish();
  }
};

}  // namespace

bool register_check_command(host::HostServices& services, const std::string& name) {
  return register_command<CheckCommand>(services, kCheckCommand, name);
}

}  // namespace nbx
