// Curves in scene documents: an array of points, each [x, y], or an object
//     {"x": 0, "y": 1, "in": "linear", "out": "smooth", "bias": 0.5}
// in which only x and y are required.
#pragma once

#include "host/base/json_place.h"
#include "host/interface/base_container.h"

namespace host {

/// Throws DocumentError for anything that isn't a curve.
CurvePoints ReadCurve(const JsonPlace& json);

/// The inverse of ReadCurve. A point is written as an object only if it has unusual values.
Json WriteCurve(const CurvePoints& curve);

}  // namespace host
