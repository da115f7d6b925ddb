#include "render/slice_picture.h"

#include <QBuffer>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <new>
#include <vector>

#include "cache/grid_type.h"
#include "util/exception.h"
#include "util/whole_file.h"

namespace nbx {

namespace {

constexpr int kMaxScale = 64;
constexpr int kMaxPixels = 32767;  // on each side
constexpr QRgb kNanColor = 0xffff00ff;

// The values of a picture, row by row from the top.
struct Plane {
  int width = 0, height = 0;
  std::vector<float> values;
};

// Where the cells of the picture lie in the grid. The front cell of pixel (u, v), counted from the
// top left, is at start + u * right + v * down; the cells behind it follow at steps of `away`.
struct View {
  std::ptrdiff_t start = 0, right = 0, down = 0, away = 0;
  int width = 0, height = 0, depth = 0;
};

View view_along(const Field<float>& grid, int axis) {
  const std::ptrdiff_t dx = 1, dy = grid.nx(), dz = dy * grid.ny();
  const int nx = grid.nx() - 2, ny = grid.ny() - 2, nz = grid.nz() - 2;
  const std::ptrdiff_t first = dx + dy + dz;  // the inner cell with the lowest indices
  switch (axis) {
    case 0:
      return {first + (ny - 1) * dy + (nz - 1) * dz, -dz, -dy, dx, nz, ny, nx};
    case 1:
      return {first, dx, dz, dy, nx, nz, ny};
    default:
      return {first + (ny - 1) * dy, dx, -dy, dz, nx, ny, nz};
  }
}

// Folds the line of cells behind each pixel: values = op(values, cell), starting from `start`.
template <class Op>
void fold(Plane& plane, const Field<float>& grid, const View& view, float start, Op op) {
  std::fill(plane.values.begin(), plane.values.end(), start);
  for (int d = 0; d < view.depth; ++d)
    for (int v = 0; v < view.height; ++v) {
      const float* cell = grid.data() + view.start + v * view.down + d * view.away;
      float* value = plane.values.data() + std::ptrdiff_t(v) * plane.width;
      for (int u = 0; u < view.width; ++u) value[u] = op(value[u], cell[u * view.right]);
    }
}

// NaN if either is NaN.
float larger(float a, float b) { return b > a || std::isnan(b) ? b : a; }

float largest(const Plane& plane) {
  float top = 0;
  for (float v : plane.values)
    if (std::isfinite(v)) top = std::max(top, v);
  return top;
}

void absorb(Plane& plane, const std::optional<float>& absorption) {
  const float densest = largest(plane);
  const float k = absorption ? *absorption : densest > 0 ? -std::log(0.05f) / densest : 0.0f;
  for (float& v : plane.values) v = 1 - std::exp(-k * v);
}

Plane project(const Field<float>& grid, const SliceOptions& options) {
  View view = view_along(grid, options.axis);
  Plane plane{view.width, view.height, {}};
  plane.values.resize(std::size_t(view.width) * view.height);
  const auto add = [](float a, float b) { return a + b; };
  switch (options.projection) {
    case Projection::kNone: {
      const int position = options.position.value_or((view.depth + 1) / 2);
      if (position < 1 || position > view.depth)
        throw Exception("slice position " + std::to_string(position) + " isn't in 1 .. " +
                        std::to_string(view.depth));
      view.start += (position - 1) * view.away;
      view.depth = 1;
      fold(plane, grid, view, 0, [](float, float b) { return b; });
      break;
    }
    case Projection::kMax:
      fold(plane, grid, view, -std::numeric_limits<float>::infinity(), larger);
      break;
    case Projection::kMean:
      fold(plane, grid, view, 0, add);
      for (float& v : plane.values) v /= view.depth;
      break;
    case Projection::kSmoke:
      fold(plane, grid, view, 0, add);
      absorb(plane, options.absorption);
      break;
  }
  return plane;
}

std::pair<float, float> value_range(const Plane& plane, const SliceOptions& options) {
  if (options.projection == Projection::kSmoke) return {0.0f, 1.0f};
  if (options.range) return *options.range;
  if (options.colors != ColorMap::kDiverging) return {0.0f, largest(plane)};
  float magnitude = 0;
  for (float v : plane.values)
    if (std::isfinite(v)) magnitude = std::max(magnitude, std::abs(v));
  if (magnitude == 0) magnitude = 1;  // keeps 0 in the middle, which is white
  return {-magnitude, magnitude};
}

QRgb color(ColorMap map, float t) {
  const auto level = [](float v) { return std::lround(255 * std::clamp(v, 0.0f, 1.0f)); };
  switch (map) {
    case ColorMap::kHeat:  // one channel after the other
      return qRgb(level(3 * t), level(3 * t - 1), level(3 * t - 2));
    case ColorMap::kDiverging: {
      const float s = 2 * t - 1, fade = 1 - std::abs(s);
      return qRgb(level(s < 0 ? fade : 1), level(fade), level(s > 0 ? fade : 1));
    }
    default:
      return qRgb(level(t), level(t), level(t));
  }
}

void check(const Field<float>& grid, const SliceOptions& options) {
  if (options.axis < 0 || options.axis > 2) throw Exception("a slice's axis is 0, 1 or 2");
  if (options.scale < 1 || options.scale > kMaxScale)
    throw Exception("a slice's scale is 1 to " + std::to_string(kMaxScale));
  if (!(options.gamma > 0)) throw Exception("a slice's gamma is above 0");
  if (grid.nx() < 3 || grid.ny() < 3 || grid.nz() < 3)
    throw Exception("the grid holds nothing but its ghost layer");
}

}  // namespace

SliceOptions slice_options(int grid_type) {
  SliceOptions options;
  if (grid_type == kGridDensity) {
    // Opacity is linear in light; a screen has a gamma of about 2.2.
    options.projection = Projection::kSmoke;
    options.gamma = 2.2f;
  } else if (grid_type == kGridSolid || staggered_axis(grid_type) >= 0) {
    options.colors = ColorMap::kDiverging;
  } else {
    options.projection = Projection::kMax;
    options.colors = ColorMap::kHeat;
  }
  return options;
}

QImage slice_picture(const Field<float>& grid, const SliceOptions& options) {
  check(grid, options);
  const Plane plane = project(grid, options);
  const auto [lo, hi] = value_range(plane, options);

  if (std::max(plane.width, plane.height) > kMaxPixels / options.scale)
    throw Exception("the picture is larger than " + std::to_string(kMaxPixels) + " pixels");
  QImage picture(plane.width, plane.height, QImage::Format_RGB32);
  if (picture.isNull()) throw std::bad_alloc();
  for (int y = 0; y < picture.height(); ++y) {
    auto* row = reinterpret_cast<QRgb*>(picture.scanLine(y));
    const float* values = plane.values.data() + std::ptrdiff_t(y) * plane.width;
    for (int x = 0; x < picture.width(); ++x) {
      const float v = values[x];
      const float t = hi != lo ? std::clamp((v - lo) / (hi - lo), 0.0f, 1.0f) : 0.0f;
      row[x] = std::isnan(v) ? kNanColor : color(options.colors, std::pow(t, 1 / options.gamma));
    }
  }
  if (options.scale == 1) return picture;
  QImage scaled = picture.scaled(
      picture.size() * options.scale, Qt::IgnoreAspectRatio,
      options.projection == Projection::kNone ? Qt::FastTransformation : Qt::SmoothTransformation);
  if (scaled.isNull()) throw std::bad_alloc();
  return scaled;
}

Outcome write_png(const QImage& picture, const std::string& path) {
  QBuffer png;
  if (!png.open(QBuffer::WriteOnly) || !picture.save(&png, "PNG"))
    return Outcome::failure("the picture can't be encoded as PNG");
  return write_whole(path, {png.data().constData(), static_cast<std::size_t>(png.size())},
                     Sync::kNone);
}

}  // namespace nbx
