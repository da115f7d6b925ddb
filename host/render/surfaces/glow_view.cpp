#include "host/render/surfaces/glow_view.h"

#include <cmath>

#include "host/render/color.h"

namespace host {

GlowView::GlowView(const GlowGrid& grid, const Vector& point, const Vector& normal,
                   const GlowMirror* mirror)
    : grid_(grid), mirror_(mirror), from_(point), point_(mirror ? mirror->Image(point) : point) {
  const std::array<double, 3>& edge = grid.lattice_.edge;
  const double side = GlowGrid::kBrickSide;
  const auto radius2 = static_cast<float>(
      0.25 * side * side * (edge[0] * edge[0] + edge[1] * edge[1] + edge[2] * edge[2]));
  const float radius = std::sqrt(radius2);
  const auto f = [](double x) { return static_cast<float>(x); };
  const Vector up = Turned(normal);
  const float px = f(point_.x), py = f(point_.y), pz = f(point_.z);
  const float nx = f(up.x), ny = f(up.y), nz = f(up.z);
  const std::size_t count = grid.lights_.size();
  for (std::size_t b = 0; b < count; ++b) {
    const GlowGrid::PointLight& light = grid.lights_[b];
    const float x = light.x - px, y = light.y - py, z = light.z - pz;
    // No point of the brick is higher above the surface than this.
    const float height = x * nx + y * ny + z * nz + radius;
    const float distance2 = std::max(x * x + y * y + z * z, radius2);
    const float cosine = std::min(std::max(height, 0.0F) / std::sqrt(distance2), 1.0F);
    geometry_[b] = cosine / distance2;
    sum_[b] = geometry_[b] * light.power;
  }
  geometry_[count] = 0;
  for (std::size_t b = 0; b < count; ++b) sum_[b] = all_ += sum_[b];
}

Vector GlowView::Sample(double pick, double x, double y, double z) const {
  const float* const end = sum_.data() + grid_.bricks_.size() - 1;
  const auto place = static_cast<float>(pick * all_);
  const float* const found = std::upper_bound(sum_.data(), end, place);
  const std::size_t b = found - sum_.data();
  const GlowGrid::Brick& brick = grid_.bricks_[b];
  // What remains of `pick` chooses the cell.
  const float before = b > 0 ? sum_[b - 1] : 0, width = *found - before;
  const float rest = width > 0 ? (place - before) / width * brick.sum.back() : 0;
  const int n = static_cast<int>(std::upper_bound(brick.sum.begin(), brick.sum.end() - 1, rest) -
                                 brick.sum.begin());
  constexpr int side = GlowGrid::kBrickSide;
  const Vector at =
      grid_.lattice_.At(brick.first[0] + n % side + x, brick.first[1] + n / side % side + y,
                        brick.first[2] + n / (side * side) + z);
  return Turned(Normalized(at - point_));
}

GlowView::Sight GlowView::Look(const Vector& direction, double distance) const {
  const CellLattice::Ray ray(point_, Turned(direction));
  CellLattice::Span span = grid_.lattice_.Cross(ray);
  span.leave = std::min(span.leave, distance);
  const double begin = std::max(span.enter, Beginning(direction));
  if (!(begin < span.leave)) return {};
  // Points with volume density p have the directional density: integral of p r^2 dr.
  double red = 0, green = 0, blue = 0, passing = 1, density = 0;
  grid_.lattice_.Walk(ray, span, [&](int i, int j, int k, double from, double to) {
    const GlowGrid::Cell& c = grid_.cells_[grid_.lattice_.Index(i, j, k)];
    const float emission = c.Mean();
    if (emission + c.extinction <= 0) return;
    const double length = to - from;
    density +=
        static_cast<double>(geometry_[grid_.brick_of_[grid_.BrickIndex(i, j, k)]] * emission) *
        (length * (to * to + to * from + from * from));
    if (to <= begin) return;
    // exp(-x) is nearly (1 - x / 2) / (1 + x / 2).
    const double seen = to - std::max(from, begin);
    const double half = 0.5 * c.extinction * seen, part = passing / (1 + half);
    red += c.emission[0] * part * seen;
    green += c.emission[1] * part * seen;
    blue += c.emission[2] * part * seen;
    passing = std::max(0.0, (1 - half) * part);
  });
  const double faint = grid_.faint_ * (span.leave - begin);
  const std::array<double, 3>& edge = grid_.lattice_.edge;
  const double whole = 3 * edge[0] * edge[1] * edge[2] * all_;
  return {{red + faint, green + faint, blue + faint}, whole > 0 ? density / whole : 0};
}

Vector GlowView::Expect(const Vector& direction, double distance) const {
  const Vector light = Look(direction, distance).light;
  const CellLattice::Ray ray(point_, Turned(direction));
  const CellLattice& coarse = grid_.haze_.lattice;
  CellLattice::Span span = coarse.Cross(ray);
  span.leave = std::min({span.leave, distance, grid_.lattice_.Cross(ray).enter});
  span.enter = std::max(span.enter, Beginning(direction));
  if (IsBlack(light) || span.IsEmpty()) return light;
  double depth = 0;
  coarse.Walk(ray, span, [&](int i, int j, int k, double from, double to) {
    depth += grid_.haze_.cells[coarse.Index(i, j, k)].extinction * (to - from);
  });
  return light * std::exp(-depth);
}

}  // namespace host
