#include "host/render/surfaces/glow_mirror.h"

#include "host/render/color.h"
#include "host/render/surfaces/surface_shading.h"

namespace host {
namespace {

constexpr std::size_t kMostMirrors = 4;
/// Surfaces that mirror less light are left to chance.
constexpr double kLeastReflection = 0.1;

/// Cosine from which on two unit vectors count as equal.
constexpr double kParallel = 1 - 1e-9;

Vector Wide(const SurfaceMesh::Point& p) { return {p[0], p[1], p[2]}; }

std::array<Vector, 3> CornersOf(const SurfaceMesh& mesh, std::size_t triangle) {
  const SurfaceMesh::Corners& c = mesh.triangles[triangle];
  const std::vector<SurfaceMesh::Point>& points = mesh.points.front();
  return {Wide(points[c[0]]), Wide(points[c[1]]), Wide(points[c[2]])};
}

Vector TwiceArea(const std::array<Vector, 3>& corners) {
  return Cross(corners[1] - corners[0], corners[2] - corners[0]);
}

/// True if the triangle mirrors everywhere, and is shaded by its own normal.
bool IsFlatMirror(const SurfaceMesh& mesh, std::size_t triangle) {
  const SurfaceMaterial& material = mesh.materials[mesh.material[triangle]];
  if (material.mask.texture || !IsMirror(material) || Mean(material.reflection) < kLeastReflection)
    return false;
  const Vector normal = TwiceArea(CornersOf(mesh, triangle));
  const double length = Length(normal);
  for (std::size_t corner = 0; corner < 3; ++corner) {
    const Vector smooth = Wide(mesh.normals.front()[3 * triangle + corner]);
    if (!(std::abs(Dot(smooth, normal)) >= (1 - 1e-6) * length) || length <= 0) return false;
  }
  return true;
}

}  // namespace

GlowMirror::GlowMirror(const SurfaceMesh& mesh, std::size_t triangle)
    : material_(&mesh.materials[mesh.material[triangle]]), object_(mesh.owner) {
  const std::array<Vector, 3> corners = CornersOf(mesh, triangle);
  const double longest = Length(corners[1] - corners[0]) + Length(corners[2] - corners[0]);
  origin_ = corners[0];
  normal_ = Normalized(TwiceArea(corners));
  // Along one of the edges at the corner that is closest to a right one.
  std::size_t best = 0;
  double least = INFINITY;
  for (std::size_t n = 0; n < 3; ++n) {
    const double cosine = std::abs(Dot(Normalized(corners[(n + 1) % 3] - corners[n]),
                                       Normalized(corners[(n + 2) % 3] - corners[n])));
    if (cosine < least) least = cosine, best = n;
  }
  axes_[0] = Normalized(corners[(best + 1) % 3] - corners[best]);
  axes_[1] = Cross(normal_, axes_[0]);
  tolerance_ = 1e-5 * (longest + Length(origin_));
}

bool GlowMirror::Add(const SurfaceMesh& mesh, std::size_t triangle) {
  const std::array<Vector, 3> corners = CornersOf(mesh, triangle);
  if (material_ != &mesh.materials[mesh.material[triangle]]) return false;
  if (std::abs(Dot(Normalized(TwiceArea(corners)), normal_)) < kParallel) return false;
  for (const Vector& corner : corners)
    if (std::abs(Height(corner)) > tolerance_) return false;
  for (const Vector& corner : corners)
    for (std::size_t a = 0; a < 2; ++a) {
      const double at = Dot(corner - origin_, axes_[a]);
      low_[a] = std::min(low_[a], at), high_[a] = std::max(high_[a], at);
    }
  area_ += 0.5 * Length(TwiceArea(corners));
  return true;
}

bool GlowMirror::IsHit(const SurfaceHit& hit) const {
  return hit.material == material_ && hit.object == object_ &&
         std::abs(Height(hit.point)) <= tolerance_ + hit.offset &&
         std::abs(Dot(hit.smooth, normal_)) >= 1 - 1e-6;
}

double GlowMirror::Distance(const Vector& origin, const Vector& direction) const {
  const double distance = -Height(origin) / Dot(direction, normal_);
  if (!(distance > 0) || !std::isfinite(distance)) return INFINITY;
  const Vector at = origin + direction * distance - origin_;
  for (std::size_t a = 0; a < 2; ++a) {
    const double place = Dot(at, axes_[a]);
    if (place < low_[a] - tolerance_ || place > high_[a] + tolerance_) return INFINITY;
  }
  return distance;
}

Vector GlowMirror::Corner(int n) const {
  return origin_ + axes_[0] * (n == 1 || n == 2 ? high_[0] : low_[0]) +
         axes_[1] * (n >= 2 ? high_[1] : low_[1]);
}

bool GlowMirror::Shows(const GlowGrid& grid, const Vector& point) const {
  const double height = Height(point);
  if (!(std::abs(height) > tolerance_)) return false;
  // The mirror is a window through which the image of the point looks at the grid.
  const Vector eye = Image(point), middle = (Corner(0) + Corner(2)) * 0.5;
  const std::array<Vector, 8> box = grid.Corners();
  const auto any = [&](const Vector& from, const Vector& inward) {
    return std::any_of(box.begin(), box.end(),
                       [&](const Vector& corner) { return Dot(corner - from, inward) > 0; });
  };
  if (!any(origin_, normal_ * height)) return false;
  for (int n = 0; n < 4; ++n) {
    const Vector side = Cross(Corner(n) - eye, Corner((n + 1) % 4) - eye);
    if (!any(eye, side * Dot(middle - eye, side))) return false;
  }
  return true;
}

std::vector<GlowMirror> FindGlowMirrors(const SurfaceScene& scene) {
  std::vector<GlowMirror> mirrors;
  for (const SurfaceMesh& mesh : scene.Meshes()) {
    if (mesh.Steps() > 1) continue;
    const std::size_t first = mirrors.size();
    for (std::size_t triangle = 0; triangle < mesh.triangles.size(); ++triangle) {
      if (!IsFlatMirror(mesh, triangle)) continue;
      const bool known = std::any_of(mirrors.begin() + first, mirrors.end(),
                                     [&](GlowMirror& m) { return m.Add(mesh, triangle); });
      if (known) continue;
      mirrors.push_back(GlowMirror(mesh, triangle));
      mirrors.back().Add(mesh, triangle);
    }
  }
  std::stable_sort(mirrors.begin(), mirrors.end(),
                   [](const GlowMirror& a, const GlowMirror& b) { return a.area_ > b.area_; });
  if (mirrors.size() > kMostMirrors) mirrors.erase(mirrors.begin() + kMostMirrors, mirrors.end());
  return mirrors;
}

}  // namespace host
