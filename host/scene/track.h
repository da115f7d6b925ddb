// Keyframes of one quantity, with interpolation.
#pragma once

#include <vector>

#include "host/interface/base_container.h"

namespace host {

enum class Interpolation {
  Linear,
  /// A monotone cubic with level ends, which never leaves the range between two neighboring keys:
  /// F. N. Fritsch and J. Butland, A method for constructing local monotone piecewise cubic
  /// interpolants, SIAM J. Sci. Stat. Comput. 5 (1984).
  Smooth,
};

struct Key {
  double frame = 0;
  ParameterValue value;
};

/// At least one key. Frames ascend strictly. All values have the same type.
struct Track {
  Interpolation interpolation = Interpolation::Linear;
  std::vector<Key> keys;

  /// Reals and vectors are interpolated. Other values hold until the next key. Before the first key
  /// and after the last, the value is constant.
  ParameterValue Evaluate(double frame) const;

  /// Multiplies reals and vectors by the factor. Other values stay.
  void Scale(double factor);
};

}  // namespace host
