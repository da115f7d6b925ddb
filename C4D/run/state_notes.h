// What a state holds beside the grids of its frame file: the course of the run so far, and the
// scene that it came from. Kept as JSON, in a file of its own beside the state.
#pragma once

#include <optional>
#include <string>

#include "C4D/run/scene_values.h"
#include "cache/frame_time.h"
#include "math/wavelet_noise.h"
#include "simulation/fluid_system.h"

namespace nbx {

/// First and last frame of a run, in seconds of the document.
struct RunRange {
  Fraction start, end;
};

struct StateNotes {
  Wind wind;                        // that the velocity of the state carries
  SceneValues scene;                // that the gas came from
  SceneValues frames;               // what the run's frames hold
  std::optional<RunRange> range;    // of the run; states of earlier versions lack it
  std::optional<NoiseState> noise;  // the same
};

/// Which state notes belong to.
struct StateKey {
  FrameTime time;
  std::uint64_t bytes = 0;  // of its file
};

/// "x/LastSimState.bcf" has its notes in "x/LastSimState.json".
std::string notes_file(const std::string& state);

/// The text of the notes of a state that is about to take its name at `state`. The notes of the one
/// that has this name now are in it too: whichever of the two a sudden end leaves, it has its own.
std::string notes_text(const std::string& state, const StateKey& key, const StateNotes& notes);

/// The notes of that state; nothing if they are missing, can't be read, or are those of another.
std::optional<StateNotes> read_notes(const std::string& state, const StateKey& key);

}  // namespace nbx
