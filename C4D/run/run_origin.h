// Where a run begins, as settled before it starts.
#pragma once

#include <memory>
#include <string>

#include "C4D/run/states/simulation_state.h"

namespace nbx {

/// By default a new run, from the start of its range or from the state that the volume's parameters
/// name.
struct RunOrigin {
  bool continues = false;             // adds to the frames of an earlier run
  std::unique_ptr<SavedState> state;  // that it continues from; null: none was found
  std::string no_state;               // why none was found
};

}  // namespace nbx
