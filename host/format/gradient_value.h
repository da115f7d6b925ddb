// Gradients as they stand in scene documents.
#pragma once

#include "host/base/json_place.h"
#include "host/interface/gradient.h"

namespace host {

/// [[position, [r, g, b]], ...], with an object {"at", "color", "alpha", "mode"} for a knot of
/// which more is to be said. Throws DocumentError for anything else, for numbers out of their
/// ranges and for knots that aren't in order.
Gradient ReadGradient(const JsonPlace& json);
Json WriteGradient(const Gradient& gradient);

}  // namespace host
