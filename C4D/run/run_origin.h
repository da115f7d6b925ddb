// Where a run should begin, and where it does, as settled before it starts.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "C4D/run/saved_scene.h"
#include "C4D/run/states/simulation_state.h"

namespace nbx {

/// Where the user wants a run to begin.
struct RunRequest {
  enum class From {
    kStart,  // of the volume's range, or at the state that the volume's parameters name
    kState,  // the last one of the cache, or the last one at or before `frame`
    kFrame,  // `frame` of the cache: its state, or else the frame itself
  } from = From::kStart;
  std::optional<int> frame;
  std::string source;  // of an up-resolution run, the cache of the coarse run; else empty
};

/// By default a new run, from the start of its range or from the state that the volume's parameters
/// name.
struct RunOrigin {
  bool continues = false;             // adds to the frames of an earlier run
  std::unique_ptr<SavedState> state;  // that it continues from; null: none was found
  std::string no_state;               // why none was found
  std::optional<SceneRecord> scene;   // that a state without notes came from
  std::optional<Fraction> start;      // of the earlier run, if that began before the volume's range
  std::string source = {};            // as in the request
};

}  // namespace nbx
