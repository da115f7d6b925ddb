#include <QDir>
#include <QFileInfo>
#include <charconv>

#include "C4D/commands/cache_changes.h"
#include "C4D/commands/cache_explain.h"
#include "C4D/commands/cache_list.h"
#include "C4D/commands/command_run.h"
#include "C4D/commands/commands.h"
#include "C4D/commands/register_command.h"
#include "C4D/commands/run_options.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/run_checks.h"
#include "C4D/settings/volume_cache.h"

namespace nbx {

namespace {

constexpr std::int32_t kCacheCommand = 1024010;

/// What each action needs behind its path; null for nothing.
struct Action {
  const char* name;
  const char* needs;
};
constexpr Action kActions[] = {{"list", nullptr},  {"explain", nullptr}, {"branch", "FRAME"},
                               {"lock", nullptr},  {"unlock", nullptr},  {"rename", "NAME"},
                               {"remove", nullptr}};

const char* needs_of(const std::string& action) {
  for (const Action& each : kActions)
    if (each.name == action) return each.needs;
  return nullptr;
}

/// Whether the cache exists. If not, there is an error.
bool has_cache(const std::string& directory, const host::BaseObject& volume,
               host::CommandContext& context) {
  const bool there = QFileInfo(QString::fromStdString(directory)).isDir();
  if (!there)
    context.Error(volume_subject(volume) + "there is no cache" +
                  (directory.empty() ? "" : " " + directory) + ": simulate the scene first");
  return there;
}

/// The cache of the only volume of a scene, or of the one that --object names.
std::string cache_of_scene(const std::string& path, const std::string& action,
                           const host::CommandArguments& arguments, host::CommandContext& context) {
  const auto document = context.LoadDocument({path});
  host::BaseObject* const volume =
      document ? context.FindObject(*document, kVolumeObject) : nullptr;
  if (!volume) return {};
  const std::string directory = set_cache(arguments, *volume);
  if (!has_cache(directory, *volume, context)) return {};
  const bool by_parameter = ParameterReader(*volume)(OVOLUME.CACHE_LOCK);
  if (by_parameter && (action == "unlock" || action == "remove")) {
    context.Error(volume_subject(*volume) + "cache_lock is on: turn it off in the scene to " +
                  action + " its cache");
    return {};
  }
  return directory;
}

/// The folder of the cache that the user names, by its path or by its scene. Empty after an error.
std::string chosen_cache(const std::string& action, const host::CommandArguments& arguments,
                         host::CommandContext& context) {
  const std::string path = arguments.GetString("path");
  const QFileInfo file(QString::fromStdString(path));
  if (!file.isDir()) return cache_of_scene(path, action, arguments, context);
  const QStringList frames =
      QDir(file.absoluteFilePath()).entryList({"*.bcf", "CacheNotes.json"}, QDir::Files);
  if (!frames.isEmpty()) return absolute_path(path);
  context.Error(path + " isn't a cache: it contains no frame files");
  return {};
}

int explain(const host::CommandArguments& arguments, host::CommandContext& context) {
  const std::string path = arguments.GetString("path");
  if (QFileInfo(QString::fromStdString(path)).isDir()) {
    context.Error(path + " is a folder: give the scene, and the cache with --cache");
    return host::kBadInput;
  }
  const auto document = context.LoadDocument({path});
  host::BaseObject* const volume =
      document ? context.FindObject(*document, kVolumeObject) : nullptr;
  if (!volume) return host::kBadInput;
  if (const Outcome frames = take_frames(arguments, *volume); !frames) {
    context.Error(volume_subject(*volume) + frames.reason());
    return host::kBadInput;
  }
  const std::string directory = set_cache(arguments, *volume);
  if (!has_cache(directory, *volume, context)) return host::kBadInput;
  return explain_cache(*volume, directory, context);
}

int act(const std::string& action, const host::CommandArguments& arguments,
        host::CommandContext& context) {
  const std::string more = arguments.GetString("argument");
  const std::optional<int> frame = as_frame(more);
  if (action == "branch" && !frame) {
    context.Error("cache branch: \"" + more + "\" isn't the number of a frame");
    return host::kBadInput;
  }
  const std::string directory = chosen_cache(action, arguments, context);
  if (directory.empty()) return host::kBadInput;
  if (action == "branch") return branch_at(directory, *frame, arguments.GetString("name"), context);
  if (action == "rename") return rename_cache_to(directory, more, context);
  if (action == "remove") return remove_whole_cache(directory, arguments.Has("yes"), context);
  return lock_cache(directory, action == "lock", context);
}

class CacheCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    using host::CommonOption;
    using host::OptionType;
    std::vector<std::string> actions;
    for (const Action& action : kActions) actions.emplace_back(action.name);
    return {
        .verb = "cache",
        .help = "Lists the caches of a scene, and branches, locks, renames or removes one",
        .options = {{.name = "action",
                     .type = OptionType::Choice,
                     .value_name = "ACTION",
                     .help = "list: shows caches with their frames, sizes and branches. "
                             "branch: makes a new cache that shares the frames up to FRAME and "
                             "can continue from there. lock, unlock: protects a cache from "
                             "runs and from remove. rename: gives it the name NAME. remove: "
                             "removes it, after a question",
                     .positional = true,
                     .required = true,
                     .choices = actions},
                    {.name = "path",
                     .value_name = "PATH",
                     .help = "A scene or the folder of a cache; for list also a folder of "
                             "caches",
                     .positional = true,
                     .required = true},
                    {.name = "argument",
                     .value_name = "FRAME|NAME",
                     .help = "The frame to branch at, or the new name",
                     .positional = true},
                    {.name = "name",
                     .value_name = "NAME",
                     .help = "Name of the branch; default: the cache's with the next number"},
                    {.name = "yes", .type = OptionType::Flag, .help = "Remove without a question"}},
        .common = {CommonOption::Frames, CommonOption::Object, CommonOption::Cache,
                   CommonOption::Set}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const std::string action = arguments.GetString("action");
    const char* const needs = needs_of(action);
    if (arguments.Has("argument") != (needs != nullptr)) {
      context.Error(needs ? "cache " + action + " needs a " +
                                (action == "branch" ? "frame" : "name") + ": nimbrix cache " +
                                action + " PATH " + needs
                          : "cache " + action + " takes one path, and nothing else");
      return host::kBadInput;
    }
    if (action == "list")
      return list_scene_or_folder(arguments.GetString("path"), arguments, context);
    if (action == "explain") return explain(arguments, context);
    return act(action, arguments, context);
  }
};

}  // namespace

bool register_cache_command(host::HostServices& services, const std::string& name) {
  return register_command<CacheCommand>(services, kCacheCommand, name);
}

}  // namespace nbx
