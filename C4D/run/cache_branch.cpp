#include "C4D/run/cache_branch.h"

#include <filesystem>

#include "C4D/run/states/state_directory.h"
#include "C4D/settings/volume_cache.h"
#include "cache/cache_directories.h"
#include "cache/cache_notes.h"
#include "cache/shared_frames.h"
#include "cache/stale_frames.h"

namespace nbx {

namespace fs = std::filesystem;

namespace {

Outcome share_scene(const std::string& from, const std::string& to) {
  const std::string scene = autosave_file(from);
  return fs::exists(scene) ? share_file(scene, autosave_file(to)) : Outcome::success();
}

Outcome make_folder(std::string& made, const std::string& from, const std::string& name) {
  if (name.empty()) {
    made = make_cache_beside(from);
    return made.empty() ? Outcome::failure("no folder can be made beside it") : Outcome::success();
  }
  made = (fs::path(from).parent_path() / name).string();
  std::error_code error;
  if (fs::create_directory(made, error)) return Outcome::success();
  return Outcome::failure(made + (error ? ": " + error.message() : " exists"));
}

}  // namespace

Outcome share_cache(const std::string& from, const std::string& to, int last) {
  Outcome shared = share_frames(from, to, last);
  if (shared) shared = share_states(from, to, last);
  if (shared) shared = share_scene(from, to);
  if (!shared) return shared;
  CacheNotes notes = read_cache_notes(from);
  std::erase_if(notes.runs, [last](const RunNote& run) { return run.first > last; });
  notes.origin = CacheOrigin{fs::path(from).filename().string(), last};
  return write_cache_notes(to, notes);
}

std::set<int> frames_with_state(const std::string& directory) {
  std::set<int> frames;
  const std::set<int> stale = stale_frames(directory);
  for (const StateFile& state : list_states(directory))
    if (state.frame && !stale.contains(*state.frame)) frames.insert(*state.frame);
  return frames;
}

Outcome branch_cache(std::string& made, const std::string& from, int frame,
                     const std::string& name) {
  if (const Outcome folder = make_folder(made, from, name); !folder) return folder;
  const Outcome shared = share_cache(from, made, frame);
  if (!shared) {
    std::error_code ignored;
    fs::remove_all(made, ignored);
  }
  return shared;
}

}  // namespace nbx
