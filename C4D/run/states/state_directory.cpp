#include "C4D/run/states/state_directory.h"

#include <QDir>
#include <QRegularExpression>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <limits>

#include "cache/shared_frames.h"
#include "cache/stale_frames.h"

namespace nbx {

std::string last_state_file(const std::string& directory) {
  return directory + "/LastSimState.bcf";
}

// The name doesn't end with digits, as the names of frames do.
std::string state_file(const std::string& directory, int frame) {
  char number[16];
  std::snprintf(number, sizeof number, "%010d", frame);
  return directory + "/" + number + "SimState.bcf";
}

std::vector<StateFile> list_states(const std::string& directory) {
  static const QRegularExpression names("^(Last|-?[0-9]+)SimState\\.bcf$");
  std::vector<StateFile> states;
  const QDir folder(QString::fromStdString(directory));
  for (const QString& name : folder.entryList({"*SimState.bcf"}, QDir::Files, QDir::Name)) {
    if (!names.match(name).hasMatch()) continue;
    const std::string path = directory + "/" + name.toStdString();
    states.push_back({path, frame_of_state(path)});
  }
  std::stable_sort(states.begin(), states.end(), [](const StateFile& a, const StateFile& b) {
    constexpr int unknown = std::numeric_limits<int>::max();
    return a.frame.value_or(unknown) > b.frame.value_or(unknown);
  });
  return states;
}

namespace {

void add(FoundState& found, const std::string& problem) {
  found.problems += (found.problems.empty() ? "" : "; ") + problem;
}

/// Reads a state, or adds why that is impossible. True if the state is there.
bool take(FoundState& found, const std::string& path) {
  auto state = std::make_unique<SavedState>();
  const Outcome read = read_state(*state, path);
  if (read)
    found.state = std::move(state);
  else
    add(found, path + ": " + read.reason());
  return static_cast<bool>(read);
}

}  // namespace

FoundState find_state(const std::string& directory, std::optional<int> at_most) {
  FoundState found;
  const std::set<int> stale = stale_frames(directory);
  std::optional<int> first;
  for (const StateFile& file : list_states(directory)) {
    if (at_most && file.frame && *file.frame > *at_most)
      first = file.frame;
    else if (file.frame && stale.contains(*file.frame))
      add(found,
          file.path + ": its frame " + std::to_string(*file.frame) + " belongs to an earlier run");
    else if (take(found, file.path))
      return found;
  }
  if (first) add(found, "the first state is that of frame " + std::to_string(*first));
  if (found.problems.empty()) take(found, last_state_file(directory));
  return found;
}

FoundState find_state_of(const std::string& directory, int frame) {
  FoundState found;
  if (stale_frames(directory).contains(frame)) return found;
  for (const StateFile& file : list_states(directory))
    if (file.frame == frame && take(found, file.path)) break;
  return found;
}

bool has_state_of(const std::string& directory, int frame) {
  const std::vector<StateFile> states = list_states(directory);
  return !stale_frames(directory).contains(frame) &&
         std::any_of(states.begin(), states.end(),
                     [&](const StateFile& state) { return state.frame == frame; });
}

Outcome share_states(const std::string& from, const std::string& to, int last) {
  namespace fs = std::filesystem;
  const std::set<int> stale = stale_frames(from);
  for (const auto& [path, frame] : list_states(from)) {
    if (!frame || *frame > last || stale.contains(*frame)) continue;
    for (const std::string& file : {notes_file(path), path}) {
      if (!fs::exists(file)) continue;
      const std::string target = to + "/" + fs::path(file).filename().string();
      if (Outcome shared = share_file(file, target); !shared) return shared;
    }
  }
  return Outcome::success();
}

void remove_unfinished_states(const std::string& directory) {
  QDir folder(QString::fromStdString(directory));
  for (const QString& name : folder.entryList({"*SimState.*.part"}, QDir::Files))
    folder.remove(name);
}

}  // namespace nbx
