// A state to continue from: a frame file with every channel of the simulation, and its notes beside
// it (state_notes.h).
#pragma once

#include <optional>
#include <string>

#include "C4D/run/states/state_notes.h"
#include "simulation/simulation3d.h"
#include "util/outcome.h"

namespace nbx {

struct SavedState {
  std::string path;
  SimFrame frame;
  std::optional<StateNotes> notes;
};

/// Writes the whole state at the end of a frame, and its notes. An earlier state of that name and
/// its notes stay until the new ones are complete, whatever happens meanwhile. A failure, after a
/// log line, if the state can't be written.
Outcome write_state(const std::string& path, Simulation3D& sim, const FrameTime& time,
                    const StateNotes& notes);

/// Reads a state without its grids. A failure if the file can't be read.
Outcome open_state(SavedState& state, const std::string& path);
/// The frame of a state; nothing if the file can't be read.
std::optional<int> frame_of_state(const std::string& path);
/// Reads all grids into memory. A failure if one can't be read.
Outcome load_grids(SavedState& state);
/// Both, with a log line for a failure.
Outcome read_state(SavedState& state, const std::string& path);

/// Removes a state and its notes.
void remove_state(const std::string& path);

}  // namespace nbx
