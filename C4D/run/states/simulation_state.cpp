#include "C4D/run/states/simulation_state.h"

#include <filesystem>

#include "util/log.h"
#include "util/whole_file.h"

namespace nbx {

namespace {

std::set<int> all_channels() {
  std::set<int> all;
  for (int key = kVelocity; key <= kSecondVelocity; ++key) all.insert(key);
  return all;
}

StateKey key_of(const SimFrame& frame, const std::string& path) {
  std::error_code error;
  return {frame.frameTime, std::filesystem::file_size(path, error)};
}

/// What `read`, which reads a file, returns or throws. Only lack of memory isn't the file's fault.
template <class Read>
Outcome reading(const Read& read) try {
  return read();
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception& e) {
  return Outcome::failure(e.what());
}

Outcome load_heads(SimFrame& frame, const std::string& path) {
  return reading([&] {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
      return Outcome::failure("there is no such file");
    return frame.load(path) ? Outcome::success() : Outcome::failure("it contains no grids");
  });
}

// The name comes last, so that every state has its notes.
Outcome write_all(const std::string& path, SimFrame& frame, const StateNotes& notes, Codec codec,
                  Sync sync) try {
  WholeFile file(path, sync);
  BcfFile out;
  std::uint64_t size = 0;
  Outcome written = frame.write_loaded(size, out, file.part(), codec, Sync::kNone);
  if (written)
    written =
        write_whole(notes_file(path), notes_text(path, key_of(frame, file.part()), notes), sync);
  return written ? file.commit() : written;
} catch (const Exception& e) {
  return Outcome::failure(e.what());
}

}  // namespace

Outcome write_state(const std::string& path, Simulation3D& sim, const FrameTime& time,
                    const StateNotes& notes) {
  SimFrame frame;
  frame.ownsData = false;
  sim.fill_frame(frame, all_channels(), time);
  const BFS& store = *sim.sink.target_cache;
  const Outcome written = write_all(path, frame, notes, store.codec, store.sync);
  if (!written) LogMessage() << "Failed to store simulation state: " << written.reason();
  return written;
}

Outcome open_state(SavedState& state, const std::string& path) {
  if (Outcome loaded = load_heads(state.frame, path); !loaded) return loaded;
  state.path = path;
  state.notes = read_notes(path, key_of(state.frame, path));
  return Outcome::success();
}

std::optional<int> frame_of_state(const std::string& path) {
  SimFrame heads;
  if (!load_heads(heads, path)) return {};
  return heads.frameTime.frame();
}

Outcome load_grids(SavedState& state) {
  return reading([&] {
    for (const auto& [type, grid] : state.frame.grids)
      if (!state.frame.grid(type)) return Outcome::failure("it can't be opened");
    return Outcome::success();
  });
}

Outcome read_state(SavedState& state, const std::string& path) {
  Outcome read = open_state(state, path);
  if (read) read = load_grids(state);
  if (!read) LogMessage() << "Failed to load simulation state from '" << path << "'";
  return read;
}

void remove_state(const std::string& path) {
  std::error_code error;
  std::filesystem::remove(path, error);
  std::filesystem::remove(notes_file(path), error);
}

}  // namespace nbx
