// The state to go on from: the file "LastSimState.bcf" of a cache, and "LastSimState.json" beside
// it with what frame files have no room for.
#pragma once

#include <optional>
#include <string>

#include "C4D/scene_values.h"
#include "simulation/simulation3d.h"

namespace nbx {

/// What stands beside a state.
struct StateNotes {
  Wind wind;          // that the velocity of the state carries
  SceneValues scene;  // of the run that made the state
};

std::string last_state_file(const std::string& directory);

/// Writes the whole state of a frame's end and its notes, or on failure leaves the former ones as
/// they are. False, with the reason and a log line, if it can't. Throws what encoding throws.
bool write_state(const std::string& path, Simulation3D& sim, const FrameTime& time,
                 const SceneValues& scene, std::string& reason);

/// The state in a file, with all its grids in memory. False, with the reason, if it can't be read.
bool read_state(const std::string& path, SimFrame& frame, std::string& reason);

/// The notes beside a state of that time; nothing if they are missing, can't be read, or are those
/// of another state.
std::optional<StateNotes> read_notes(const std::string& path, const FrameTime& time);

}  // namespace nbx
