// What a state needs besides the grids of its frame file: how far the run has come, and the scene
// that it came from. Saved as JSON in a file of its own beside the state.
#pragma once

#include <optional>
#include <string>

#include "C4D/run/states/scene_values.h"
#include "cache/frame_time.h"
#include "math/wavelet_noise.h"
#include "simulation/fluid_system.h"

namespace nbx {

/// First and last frame of a run, in seconds of the document.
struct RunRange {
  Fraction start, end;
};

struct StateNotes {
  Wind wind;                        // that the velocity of the state includes
  SceneValues scene;                // that the gas came from
  SceneValues frames;               // what the run stores in its frames
  std::optional<RunRange> range;    // of the run; missing in states of earlier versions
  std::optional<NoiseState> noise;  // likewise
};

/// Identifies the state that notes belong to.
struct StateKey {
  FrameTime time;
  std::uint64_t bytes = 0;  // of its file
};

/// "x/LastSimState.bcf" has its notes in "x/LastSimState.json".
std::string notes_file(const std::string& state);

/// The text of the notes of a state that is about to get the name `state`. It includes the notes of
/// the state that has this name now: whichever of the two states a kill leaves has its notes.
std::string notes_text(const std::string& state, const StateKey& key, const StateNotes& notes);

/// The notes of a state; nothing if they are missing, unreadable, or belong to another state.
std::optional<StateNotes> read_notes(const std::string& state, const StateKey& key);

}  // namespace nbx
