// Keyframes of one quantity, and its value between them.
#pragma once

#include <vector>

#include "host/interface/base_container.h"

namespace host {

enum class Interpolation {
  Linear,
  /// A cubic through the keys that never leaves the range between two neighbors, with level ends:
  /// F. N. Fritsch and J. Butland, A method for constructing local monotone piecewise cubic
  /// interpolants, SIAM J. Sci. Stat. Comput. 5 (1984).
  Smooth,
};

struct Key {
  double frame = 0;
  ParameterValue value;
};

/// At least one key; frames ascending, each once; all values of one kind.
struct Track {
  Interpolation interpolation = Interpolation::Linear;
  std::vector<Key> keys;

  /// Before the first key its value, after the last one that one's. Reals and vectors are
  /// interpolated; values of other kinds hold until the next key.
  ParameterValue Evaluate(double frame) const;

  /// Multiplies reals and vectors, and leaves all else.
  void Scale(double factor);
};

}  // namespace host
