#include "C4D/run/states/state_directory.h"

#include <QDir>
#include <QRegularExpression>
#include <algorithm>
#include <cstdio>
#include <limits>

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

FoundState find_state(const std::string& directory, std::optional<int> at_most) {
  FoundState found;
  const auto add = [&](const std::string& problem) {
    found.problems += (found.problems.empty() ? "" : "; ") + problem;
  };
  std::optional<int> first;
  for (const StateFile& file : list_states(directory)) {
    if (at_most && file.frame && *file.frame > *at_most) {
      first = file.frame;
      continue;
    }
    auto state = std::make_unique<SavedState>();
    if (const Outcome read = read_state(*state, file.path)) {
      found.state = std::move(state);
      return found;
    } else {
      add(file.path + ": " + read.reason());
    }
  }
  if (first) add("the first state is that of frame " + std::to_string(*first));
  if (!found.problems.empty()) return found;
  const std::string last = last_state_file(directory);
  SavedState none;
  add(last + ": " + read_state(none, last).reason());
  return found;
}

void remove_unfinished_states(const std::string& directory) {
  QDir folder(QString::fromStdString(directory));
  for (const QString& name : folder.entryList({"*SimState.*.part"}, QDir::Files))
    folder.remove(name);
}

}  // namespace nbx
