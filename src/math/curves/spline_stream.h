// The stored form of a curve parameter: a version, the control points, and how the curve editor was
// looking at them.
//
//     long     version, 0x52533032; the older 0x52533031 ends after the points
//     long     number of points
//     a point  6 reals: x, y, inSlope, outSlope, sideBias, bias; 2 longs: inMode, outMode
//     bool     the editor's view was set; ignored when read
//     4 lreals the editor's view
#pragma once

#include <array>

#include "math/rational_spline.h"
#include "util/value_stream.h"

namespace nbx {

/// The part of the plane that the curve editor shows.
struct SplineView {
  std::array<double, 4> rectangle{0, 0, 1, 1};  // x, y, width, height
  bool valid = false;                           // it came from a stream or from the editor
};

/// Writes the present form. False if a value couldn't be written.
[[nodiscard]] bool write_spline(ValueWriter& out, const RationalSpline& spline,
                                const SplineView& view);

/// Reads either form. Slopes are dropped: no curve of the system has any. The present form gives a
/// valid view, the older one clears `view.valid` and keeps the rectangle. False if the version is
/// another one, the stream ends early or a number of a point isn't finite; `spline` and `view` are
/// left alone then. A false number of points costs no more memory than the stream has points.
[[nodiscard]] bool read_spline(ValueReader& in, RationalSpline& spline, SplineView& view);

}  // namespace nbx
