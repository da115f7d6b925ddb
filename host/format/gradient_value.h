// Gradients in scene documents.
#pragma once

#include "host/base/json_place.h"
#include "host/interface/gradient.h"

namespace host {

/// [[position, [r, g, b]], ...]. A knot may also be an object {"at", "color", "alpha", "mode"}.
/// Throws DocumentError for anything else, for numbers out of range and for knots out of order.
Gradient ReadGradient(const JsonPlace& json);
Json WriteGradient(const Gradient& gradient);

}  // namespace host
