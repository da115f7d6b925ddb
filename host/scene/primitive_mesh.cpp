#include "host/scene/primitive_mesh.h"

#include <cmath>
#include <numbers>

#include "host/scene/builtin_classes.h"

namespace host {
namespace {

constexpr double kTurn = 2 * std::numbers::pi;

/// A point of the outline that revolves about the y axis.
struct OutlinePoint {
  double radius, y;
};

/// A surface of revolution.
///
/// The outline runs upward on the outside, so that at a polygon
///
///     b - c
///     |   |    up x around points outward, with around = (-sin, 0, cos).
///     a - d
///
/// Points on the axis exist once, and the polygons there are triangles.
PrimitiveMesh Revolve(const std::vector<OutlinePoint>& outline, bool closed,
                      std::int32_t segments) {
  PrimitiveMesh mesh;
  std::vector<std::vector<std::int32_t>> rows;
  for (const auto& [radius, y] : outline) {
    std::vector<std::int32_t>& row = rows.emplace_back();
    for (std::int32_t i = 0; i < segments; ++i) {
      if (radius == 0 && i > 0) {
        row.push_back(row.front());
        continue;
      }
      const double angle = kTurn * i / segments;
      row.push_back(static_cast<std::int32_t>(mesh.points.size()));
      mesh.points.push_back({radius * std::cos(angle), y, radius * std::sin(angle)});
    }
  }
  if (closed) rows.push_back(rows.front());
  const double last = rows.size() - 1, around = segments;
  for (std::size_t j = 0; j + 1 < rows.size(); ++j)
    for (std::int32_t i = 0; i < segments; ++i) {
      const std::int32_t next = (i + 1) % segments;
      const std::int32_t a = rows[j][i], b = rows[j + 1][i], c = rows[j + 1][next],
                         d = rows[j][next];
      const double u0 = i / around, u1 = (i + 1) / around;
      const double v0 = 1 - j / last, v1 = 1 - (j + 1) / last;
      const Vector ta{u0, v0, 0}, tb{u0, v1, 0}, tc{u1, v1, 0}, td{u1, v0, 0};
      if (a == d) {
        mesh.polygons.push_back({a, b, c, c});
        mesh.uvws.push_back({ta, tb, tc, tc});
      } else if (b == c) {
        mesh.polygons.push_back({a, b, d, d});
        mesh.uvws.push_back({ta, tb, td, td});
      } else {
        mesh.polygons.push_back({a, b, c, d});
        mesh.uvws.push_back({ta, tb, tc, td});
      }
    }
  return mesh;
}

PrimitiveMesh Sphere(double radius, std::int32_t segments, std::int32_t rings) {
  std::vector<OutlinePoint> outline{{0, -radius}};
  for (std::int32_t j = 1; j < rings; ++j) {
    const double angle = std::numbers::pi * j / rings;
    outline.push_back({radius * std::sin(angle), -radius * std::cos(angle)});
  }
  outline.push_back({0, radius});
  return Revolve(outline, false, segments);
}

PrimitiveMesh Torus(double radius, double tube, std::int32_t segments, std::int32_t rings) {
  std::vector<OutlinePoint> outline;
  for (std::int32_t j = 0; j < rings; ++j) {
    const double angle = kTurn * j / rings;
    outline.push_back({radius + tube * std::cos(angle), tube * std::sin(angle)});
  }
  return Revolve(outline, true, segments);
}

PrimitiveMesh Cylinder(double radius, double height, std::int32_t segments, std::int32_t rings,
                       bool caps) {
  std::vector<OutlinePoint> outline;
  if (caps) outline.push_back({0, -height / 2});
  for (std::int32_t j = 0; j <= rings; ++j)
    outline.push_back({radius, height * (static_cast<double>(j) / rings - 0.5)});
  if (caps) outline.push_back({0, height / 2});
  return Revolve(outline, false, segments);
}

const Vector kSquare[4] = {{0, 1, 0}, {0, 0, 0}, {1, 0, 0}, {1, 1, 0}};

PrimitiveMesh Plane(double width, double depth, std::int32_t segments) {
  PrimitiveMesh mesh;
  const std::int32_t row = segments + 1;
  for (std::int32_t j = 0; j < row; ++j)
    for (std::int32_t i = 0; i < row; ++i)
      mesh.points.push_back({width * (static_cast<double>(i) / segments - 0.5), 0,
                             depth * (static_cast<double>(j) / segments - 0.5)});
  const double edge = 1.0 / segments;
  for (std::int32_t j = 0; j < segments; ++j)
    for (std::int32_t i = 0; i < segments; ++i) {
      const std::int32_t a = j * row + i;
      mesh.polygons.push_back({a, a + row, a + row + 1, a + 1});
      const auto uv = [&](int di, int dj) {
        return Vector{(i + di) * edge, 1 - (j + dj) * edge, 0};
      };
      mesh.uvws.push_back({uv(0, 0), uv(0, 1), uv(1, 1), uv(1, 0)});
    }
  return mesh;
}

/// Bits 0, 1 and 2 of a corner's index give its sides along x, y and z.
PrimitiveMesh Box(const Vector& size) {
  PrimitiveMesh mesh;
  for (int i = 0; i < 8; ++i)
    mesh.points.push_back(
        {size.x * ((i & 1) - 0.5), size.y * ((i >> 1 & 1) - 0.5), size.z * ((i >> 2 & 1) - 0.5)});
  for (int axis = 0; axis < 3; ++axis)
    for (int side = 0; side < 2; ++side) {
      // The other two axes, in the cyclic order u x v = axis; swapped for the low side.
      const int u = 1 << (axis + 1 + (1 - side)) % 3, v = 1 << (axis + 1 + side) % 3;
      const int a = side << axis;
      mesh.polygons.push_back({a, a + u, a + u + v, a + v});
      mesh.uvws.push_back({kSquare[0], kSquare[1], kSquare[2], kSquare[3]});
    }
  return mesh;
}

}  // namespace

bool IsPrimitive(std::int32_t type) { return type >= kSphereObject && type <= kCylinderObject; }

double PrimitivePolygons(std::int32_t type, const BaseContainer& data) {
  const double segments = data.GetLong(kPrimitiveSegments), rings = data.GetLong(kPrimitiveRings);
  if (type == kBoxObject) return 6;
  if (type == kPlaneObject) return segments * segments;
  const bool caps = type == kCylinderObject && data.GetBool(kPrimitiveCaps);
  return segments * (rings + (caps ? 2 : 0));
}

PrimitiveMesh MakePrimitive(std::int32_t type, const BaseContainer& data) {
  const double radius = data.GetReal(kPrimitiveRadius), height = data.GetReal(kPrimitiveHeight);
  const std::int32_t segments = data.GetLong(kPrimitiveSegments);
  const std::int32_t rings = data.GetLong(kPrimitiveRings);
  switch (type) {
    case kSphereObject:
      return Sphere(radius, segments, rings);
    case kTorusObject:
      return Torus(radius, data.GetReal(kPrimitiveTubeRadius), segments, rings);
    case kPlaneObject:
      return Plane(data.GetReal(kPrimitiveSize), height, segments);
    case kCylinderObject:
      return Cylinder(radius, height, segments, rings, data.GetBool(kPrimitiveCaps));
    default:
      return Box(data.GetVector(kPrimitiveSize));
  }
}

}  // namespace host
