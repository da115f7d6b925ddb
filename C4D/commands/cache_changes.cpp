#include "C4D/commands/cache_changes.h"

#include <filesystem>

#include "C4D/run/cache_branch.h"
#include "C4D/run/cache_tree.h"
#include "cache/cache_directories.h"
#include "cache/stale_frames.h"
#include "util/format_size.h"

namespace nbx {

namespace fs = std::filesystem;

namespace {

CacheDirData parts(const std::string& directory) {
  const fs::path path(directory);
  return {path.parent_path().string(), path.filename().string()};
}

int refuse(host::CommandContext& context, const std::string& why,
           host::ExitCode code = host::kBadInput) {
  context.Error(why);
  return code;
}

/// The branches of a renamed cache name it by its new name.
Outcome rename_origins(const std::vector<std::string>& branches, const std::string& name) {
  for (const std::string& branch : branches) {
    CacheNotes notes = read_cache_notes(branch);
    notes.origin->name = name;
    if (Outcome written = write_cache_notes(branch, notes); !written) return written;
  }
  return Outcome::success();
}

/// Why the cache can't be removed; empty if it can.
std::string what_keeps(const std::string& directory) {
  if (cache_locked(directory))
    return directory + " is locked: unlock it first with: nimbrix cache unlock " + directory;
  const std::vector<std::string> foreign = foreign_files(directory);
  if (foreign.empty()) return {};
  return directory + " contains " + foreign.front() +
         (foreign.size() > 1 ? " and other files" : "") +
         ", which no run has made: move that elsewhere first";
}

/// Says from which frame a run can continue in the new cache, and how.
void show_ways_on(const std::string& cache, int frame, const std::set<int>& states,
                  host::CommandContext& context) {
  const std::string simulate = ": nimbrix simulate SCENE --cache " + cache;
  if (!states.empty())
    context.Result("to continue from frame " + std::to_string(*states.rbegin()) +
                   (states.contains(frame) ? "" : ", the last one with a state") + simulate +
                   " --continue");
  if (!states.contains(frame))
    context.Result("frame " + std::to_string(frame) +
                   " has no state; to start from the channels that it stores" + simulate +
                   " --start-from " + std::to_string(frame));
}

}  // namespace

int lock_cache(const std::string& directory, bool on, host::CommandContext& context) {
  const std::string what = on ? "locked" : "unlocked";
  if (!set_cache_lock(directory, on))
    return refuse(context, directory + " can't be " + what + ": the folder can't be written",
                  host::kFailed);
  context.Result(what + ": " + directory);
  context.Event(what, {{"directory", directory}});
  return host::kDone;
}

int rename_cache_to(const std::string& directory, const std::string& name,
                    host::CommandContext& context) {
  CacheDirData data = parts(directory);
  const std::string target = (fs::path(data.base) / name).string();
  if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos)
    return refuse(context, "\"" + name + "\" isn't the name of a folder: give a name without /");
  if (fs::exists(target)) return refuse(context, target + " exists: give another name");
  const std::vector<std::string> branches = branches_of(directory);
  if (!rename_cache(data, name))
    return refuse(context, directory + " can't be renamed to " + name, host::kFailed);
  if (const Outcome renamed = rename_origins(branches, name); !renamed)
    return refuse(context, "the origin of a branch can't be renamed: " + renamed.reason(),
                  host::kFailed);
  context.Result("renamed: " + directory + " is now " + target +
                 "; a scene finds it with --cache or cache_name");
  context.Event("renamed", {{"from", directory}, {"directory", target}});
  return host::kDone;
}

int remove_whole_cache(const std::string& directory, bool yes, host::CommandContext& context) {
  if (const std::string why = what_keeps(directory); !why.empty())
    return refuse(context, why, host::kFailed);
  const CacheSummary cache = summarize_cache(directory);
  const std::string what = directory + " with " +
                           std::to_string(cache.frames.size() + cache.stale.size()) + " frames, " +
                           format_size(cache.bytes, 2);
  const std::optional<bool> answer = yes ? true : context.Ask("Remove " + what + "?");
  if (!answer) return refuse(context, "removing " + what + " can't be undone: give --yes");
  if (!*answer) return refuse(context, directory + " stays", host::kFailed);
  if (!remove_cache(parts(directory)))
    return refuse(context, directory + " can't be removed completely", host::kFailed);
  context.Result("removed: " + what);
  context.Event("removed", {{"directory", directory},
                            {"bytes", static_cast<std::int64_t>(cache.bytes)},
                            {"shared_bytes", static_cast<std::int64_t>(cache.shared_bytes)}});
  return host::kDone;
}

int branch_at(const std::string& directory, int frame, const std::string& name,
              host::CommandContext& context) {
  const std::set<int> frames = own_frames(directory);
  if (!frames.contains(frame))
    return refuse(context, directory + " has no frame " + std::to_string(frame) +
                               " of its last run: it has " + named_frames(frames));
  if (name.find('/') != std::string::npos || name == "." || name == "..")
    return refuse(context, "--name: \"" + name + "\" isn't the name of a folder");
  const fs::path target = fs::path(directory).parent_path() / name;
  if (!name.empty() && fs::exists(target))
    return refuse(context, "--name: " + target.string() + " exists: give another name");
  std::string made;
  if (const Outcome branched = branch_cache(made, directory, frame, name); !branched)
    return refuse(context, directory + " can't be branched: " + branched.reason(), host::kFailed);
  context.Result("branched: " + made + " shares the frames up to " + std::to_string(frame));
  const std::set<int> states = frames_with_state(made);
  context.Event("branched", {{"directory", made},
                             {"origin", directory},
                             {"frame", std::int64_t{frame}},
                             {"states", frame_ranges(states)}});
  show_ways_on(made, frame, states, context);
  return host::kDone;
}

}  // namespace nbx
