// The stored form of a curve parameter: a version, the control points, and the view of the curve
// editor.
//
//     long     version, 0x52533032; the older version 0x52533031 ends after the points
//     long     number of points
//     a point  6 reals: x, y, inSlope, outSlope, sideBias, bias; 2 longs: inMode, outMode
//     bool     whether the editor's view was set; ignored by the reader
//     4 lreals the editor's view
#pragma once

#include <array>

#include "math/rational_spline.h"
#include "util/value_stream.h"

namespace nbx {

/// The part of the plane that the curve editor shows.
struct SplineView {
  std::array<double, 4> rectangle{0, 0, 1, 1};  // x, y, width, height
  bool valid = false;                           // set by a stream or by the editor
};

/// Writes the present form. False if a value couldn't be written.
[[nodiscard]] bool write_spline(ValueWriter& out, const RationalSpline& spline,
                                const SplineView& view);

/// Reads both forms. Drops the slopes, since the editor sets none. The present form gives a valid
/// view; the older one clears `view.valid` and keeps the rectangle. Returns false, and changes
/// neither `spline` nor `view`, if the version is unknown, the stream ends early or a number of a
/// point isn't finite. A wrong number of points costs no more memory than the stream has points.
[[nodiscard]] bool read_spline(ValueReader& in, RationalSpline& spline, SplineView& view);

}  // namespace nbx
