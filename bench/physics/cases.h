// The cases: each simulates a flow that theory describes, and measures it.
#pragma once

#include "bench/physics/result.h"

namespace nbx::physics {

/// Scenes that equal their mirror images, and how far the gas departs from that.
Result symmetry(Effort effort);

}  // namespace nbx::physics
