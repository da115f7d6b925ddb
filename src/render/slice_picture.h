// Pictures of a grid: one slice, or a projection along an axis. They give a quick look at a frame
// without lights, materials and cameras.
#pragma once

#include <QImage>
#include <optional>
#include <string>
#include <utility>

#include "math/field.h"
#include "util/outcome.h"

namespace nbx {

/// How the line of cells behind a pixel becomes its value.
enum class Projection {
  kNone,   // the cell at `position`
  kMax,    // the largest
  kMean,   // the mean
  kSmoke,  // the opacity of smoke of these densities: 1 - exp(-absorption * sum)
};

enum class ColorMap {
  kGray,       // black to white
  kHeat,       // black, red, yellow, white: a glowing body
  kDiverging,  // blue, white, red; white is the middle of the range
};

struct SliceOptions {
  int axis = 2;                      // 0, 1, 2: looks along x, y, z
  std::optional<int> position = {};  // index in the grid; none: the middle
  Projection projection = Projection::kNone;
  std::optional<std::pair<float, float>> range = {};  // values at the ends of the color map
  std::optional<float> absorption = {};               // kSmoke: per unit of density and cell
  ColorMap colors = ColorMap::kGray;
  float gamma = 1;  // above 1 brightens the lower part of the range
  int scale = 1;    // pixels per cell; projections are smoothed, a slice shows its cells
};

/// Good options for a type of grid: density as smoke, velocity components and the solid's distances
/// with a white 0, everything else as heat.
SliceOptions slice_options(int grid_type);

/// Makes the picture, without the grid's ghost layer. The view is from the positive end of the
/// axis:
///
///     axis 0, from the right    z to the left,   y up
///     axis 1, from above        x to the right,  z down
///     axis 2, from the front    x to the right,  y up
///
/// The default range is 0 to the largest value in the picture; for kDiverging it is the largest
/// magnitude in both directions; kSmoke always uses 0 to 1. By default the densest line of cells
/// has an opacity of 95 % in every frame; set `absorption` to compare frames. NaNs are magenta.
///
/// Throws Exception for an axis, position, scale or gamma out of range, for a grid that consists of
/// its ghost layer, and for a picture of more than 32767 pixels on a side. Throws std::bad_alloc.
QImage slice_picture(const Field<float>& grid, const SliceOptions& options);

/// Writes a picture completely or not at all: on failure an existing file stays as it was.
Outcome write_png(const QImage& picture, const std::string& path);

}  // namespace nbx
