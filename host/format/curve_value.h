// Curves as they stand in scene documents: an array of points, each [x, y], or an object
//     {"x": 0, "y": 1, "in": "linear", "out": "smooth", "bias": 0.5}
// of which only x and y must be there.
#pragma once

#include "host/base/json_place.h"
#include "host/interface/base_container.h"

namespace host {

/// Throws DocumentError for anything but a curve.
CurvePoints ReadCurve(const JsonPlace& json);

/// In the form that ReadCurve takes; a point is an object where it differs from the usual.
Json WriteCurve(const CurvePoints& curve);

}  // namespace host
