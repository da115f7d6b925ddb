#include "C4D/run/simulation_state.h"

#include <QDir>
#include <QRegularExpression>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <limits>

#include "util/log.h"
#include "util/whole_file.h"

namespace nbx {

namespace {

constexpr char kLastState[] = "LastSimState.bcf";

SimSettings with_all_channels(const SimSettings& settings) {
  SimSettings all = settings;
  for (int key = kVelocity; key <= kSecondVelocity; ++key) all.cached_channels.insert(key);
  return all;
}

StateKey key_of(const SimFrame& frame, const std::string& path) {
  std::error_code error;
  return {frame.frameTime, std::filesystem::file_size(path, error)};
}

// The name comes last, so that a state which is there has its notes.
bool write_all(const std::string& path, SimFrame& frame, const StateNotes& notes, Codec codec,
               Sync sync, std::string& reason) try {
  WholeFile file(path, sync);
  BcfFile out;
  std::uint64_t size = 0;
  Outcome written = frame.write_loaded(size, out, file.part(), codec, Sync::kNone);
  if (written)
    written =
        write_whole(notes_file(path), notes_text(path, key_of(frame, file.part()), notes), sync);
  if (written) written = file.commit();
  reason = written.reason();
  return static_cast<bool>(written);
} catch (const Exception& e) {
  reason = e.what();
  return false;
}

bool load_heads(SimFrame& frame, const std::string& path, std::string& reason) try {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) {
    reason = "there is no such file";
    return false;
  }
  if (frame.load(path)) return true;
  reason = "it holds no grids";
  return false;
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception& e) {
  reason = e.what();
  return false;
}

}  // namespace

std::string last_state_file(const std::string& directory) { return directory + "/" + kLastState; }

// The name doesn't end with digits: those are the names of frames.
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
    SimFrame heads;
    std::string ignored;
    states.push_back({path, {}});
    if (load_heads(heads, path, ignored)) states.back().frame = heads.frameTime.frame();
  }
  std::stable_sort(states.begin(), states.end(), [](const StateFile& a, const StateFile& b) {
    constexpr int unknown = std::numeric_limits<int>::max();
    return a.frame.value_or(unknown) > b.frame.value_or(unknown);
  });
  return states;
}

bool write_state(const std::string& path, Simulation3D& sim, const FrameTime& time,
                 const StateNotes& notes, std::string& reason) {
  SimFrame frame;
  frame.ownsData = false;
  sim.fill_frame(frame, with_all_channels(sim.settings), time);
  const BFS& store = *sim.settings.target_cache;
  if (write_all(path, frame, notes, store.codec, store.sync, reason)) return true;
  LogMessage() << "Failed to store simulation state: " << reason;
  return false;
}

void remove_state(const std::string& path) {
  std::error_code error;
  std::filesystem::remove(path, error);
  std::filesystem::remove(notes_file(path), error);
}

void remove_unfinished_states(const std::string& directory) {
  QDir folder(QString::fromStdString(directory));
  for (const QString& name : folder.entryList({"*SimState.*.part"}, QDir::Files))
    folder.remove(name);
}

std::unique_ptr<SavedState> open_state(const std::string& path, std::string& reason) {
  auto state = std::make_unique<SavedState>();
  state->path = path;
  if (!load_heads(state->frame, path, reason)) return nullptr;
  state->notes = read_notes(path, key_of(state->frame, path));
  return state;
}

bool load_grids(SavedState& state, std::string& reason) try {
  for (const auto& [type, grid] : state.frame.grids)
    if (!state.frame.grid(type)) {
      reason = "it can't be opened";
      return false;
    }
  return true;
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception& e) {
  reason = e.what();
  return false;
}

std::unique_ptr<SavedState> read_state(const std::string& path, std::string& reason) {
  auto state = open_state(path, reason);
  if (state && load_grids(*state, reason)) return state;
  LogMessage() << "Failed to load simulation state from '" << path << "'";
  return nullptr;
}

std::unique_ptr<SavedState> find_state(const std::string& directory, std::optional<int> at_most,
                                       std::string& problems) {
  std::string reason, later;
  for (const StateFile& file : list_states(directory)) {
    if (at_most && file.frame && *file.frame > *at_most) {
      later = std::to_string(*file.frame);
      continue;
    }
    if (auto state = read_state(file.path, reason)) return state;
    problems += (problems.empty() ? "" : "; ") + file.path + ": " + reason;
  }
  if (!later.empty())
    problems += (problems.empty() ? "" : "; ") + ("the first state is that of frame " + later);
  if (!problems.empty()) return nullptr;
  const std::string last = last_state_file(directory);
  read_state(last, reason);
  problems = last + ": " + reason;
  return nullptr;
}

}  // namespace nbx
