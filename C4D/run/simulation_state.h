// The states to go on from, as files of a cache: "LastSimState.bcf" is that of the end of the last
// run, "0000000012SimState.bcf" that of a frame which a run has passed. A state holds every channel
// of the simulation; its notes lie beside it (state_notes.h).
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "C4D/run/state_notes.h"
#include "simulation/simulation3d.h"

namespace nbx {

std::string last_state_file(const std::string& directory);
std::string state_file(const std::string& directory, int frame);

struct StateFile {
  std::string path;
  std::optional<int> frame;  // nothing if the file can't be read
};
/// The states of a cache, the latest first; before them those that can't be read.
std::vector<StateFile> list_states(const std::string& directory);

/// Writes the whole state of a frame's end and its notes. The former state of that name, if there
/// is one, and its notes stay until the new ones are complete, whatever happens meanwhile. False,
/// with the reason and a log line, if the state can't be written.
bool write_state(const std::string& path, Simulation3D& sim, const FrameTime& time,
                 const StateNotes& notes, std::string& reason);

/// Removes a state and its notes.
void remove_state(const std::string& path);
/// Removes what writers left that were killed.
void remove_unfinished_states(const std::string& directory);

struct SavedState {
  std::string path;
  SimFrame frame;
  std::optional<StateNotes> notes;
};

/// A state without its grids. Null, with the reason, if the file can't be read.
std::unique_ptr<SavedState> open_state(const std::string& path, std::string& reason);
/// Reads all grids into memory. False, with the reason, if one can't be read.
bool load_grids(SavedState& state, std::string& reason);
/// Both, with a log line for a failure.
std::unique_ptr<SavedState> read_state(const std::string& path, std::string& reason);

/// The last state of a cache at or before a frame, or simply the last one. `problems` then says
/// which later ones can't be read. Null if there is none; `problems` says why.
std::unique_ptr<SavedState> find_state(const std::string& directory, std::optional<int> at_most,
                                       std::string& problems);

}  // namespace nbx
