// Pictures of a grid: one slice of it, or all of it seen along an axis. For a quick look at a frame
// without lights, materials and cameras.
#pragma once

#include <QImage>
#include <optional>
#include <string>
#include <utility>

#include "math/field.h"

namespace nbx {

/// What a pixel takes from the line of cells behind it.
enum class Projection {
  kNone,   // the cell at `position`
  kMax,    // the largest
  kMean,   // the mean
  kSmoke,  // what smoke of these densities hides: 1 - exp(-absorption * sum)
};

enum class ColorMap {
  kGray,       // black to white
  kHeat,       // black, red, yellow, white: a glowing body
  kDiverging,  // blue, white, red, with white in the middle of the range
};

struct SliceOptions {
  int axis = 2;                      // 0, 1, 2: looks along x, y, z
  std::optional<int> position = {};  // index in the grid; without it the middle
  Projection projection = Projection::kNone;
  std::optional<std::pair<float, float>> range = {};  // values at the ends of the color map
  std::optional<float> absorption = {};               // kSmoke: per unit of density and cell
  ColorMap colors = ColorMap::kGray;
  float gamma = 1;  // above 1 brightens the lower part of the range
  int scale = 1;    // pixels per cell; projections are smoothed, a slice shows its cells
};

/// What shows a grid of this type well: density as smoke, velocity components and the solid's
/// distances around a white 0, all else as heat.
SliceOptions slice_options(int gridType);

/// Makes the picture, without the grid's ghost layer. The eye stands at the positive end of the
/// axis. Up is y, and x runs to the right where it is seen:
///
///     axis 0, from the right    z to the left,   y up
///     axis 1, from above        x to the right,  z down
///     axis 2, from the front    x to the right,  y up
///
/// Without `range` it is 0 to the largest value in the picture, for kDiverging the largest
/// magnitude to both sides, for kSmoke always 0 to 1. Without `absorption` the densest line of
/// cells hides 95 %, whatever the frame; give one to compare frames. NaNs are magenta.
///
/// Throws Exception for an axis, position, scale or gamma out of range, a grid with nothing inside
/// of its ghost layer, and a picture of more than 32767 pixels on a side; std::bad_alloc.
QImage slice_picture(const Field<float>& grid, const SliceOptions& options);

/// Writes a picture whole or not at all: a file that stood there before stays when this fails.
/// False then, with the reason in `error` unless that is null.
bool write_png(const QImage& picture, const std::string& path, std::string* error);

}  // namespace nbx
