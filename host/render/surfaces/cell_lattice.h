// Boxes of equal size that fill a larger box, and walks of rays through them.
//
// J. Amanatides and A. Woo, A fast voxel traversal algorithm for ray tracing, Eurographics 1987.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "host/interface/vector.h"

namespace host {

struct CellLattice {
  std::array<double, 3> low{}, edge{};
  std::array<int, 3> count{};

  Vector At(double x, double y, double z) const {
    return {low[0] + x * edge[0], low[1] + y * edge[1], low[2] + z * edge[2]};
  }
  std::size_t Index(int i, int j, int k) const {
    return (static_cast<std::size_t>(k) * count[1] + j) * count[0] + i;
  }
  std::size_t Size() const { return Index(0, 0, count[2]); }

  struct Ray {
    Ray(const Vector& from, const Vector& to)
        : origin{from.x, from.y, from.z},
          direction{to.x, to.y, to.z},
          inverse{1 / to.x, 1 / to.y, 1 / to.z} {}
    std::array<double, 3> origin, direction, inverse;
  };
  /// The part of a ray inside the lattice: enter < leave if there is one.
  struct Span {
    double enter = 0, leave = INFINITY;
    bool IsEmpty() const { return !(enter < leave); }
  };
  Span Cross(const Ray& ray) const {
    Span span;
    for (std::size_t a = 0; a < 3; ++a) {
      const double t0 = (low[a] - ray.origin[a]) * ray.inverse[a];
      const double t1 = (low[a] + count[a] * edge[a] - ray.origin[a]) * ray.inverse[a];
      span.enter = std::fmax(span.enter, std::fmin(t0, t1));
      span.leave = std::fmin(span.leave, std::fmax(t0, t1));
    }
    return span;
  }

  /// Calls visit(i, j, k, from, to) for the cells along a part of a ray, in order. `span` is Cross
  /// of the ray, or shorter, and not empty.
  template <typename Visit>
  void Walk(const Ray& ray, const Span& span, Visit visit) const {
    std::array<int, 3> cell{}, step{};
    std::array<double, 3> next{}, stride{};  // distances to the next side of a cell
    for (std::size_t a = 0; a < 3; ++a) {
      const double d = ray.direction[a];
      const double x = (ray.origin[a] + d * span.enter - low[a]) / edge[a];
      cell[a] = std::clamp(static_cast<int>(x), 0, count[a] - 1);
      step[a] = d > 0 ? 1 : -1;
      const double side = low[a] + (cell[a] + (d > 0 ? 1 : 0)) * edge[a];
      next[a] = d == 0 ? INFINITY : (side - ray.origin[a]) * ray.inverse[a];
      stride[a] = std::abs(edge[a] * ray.inverse[a]);
    }
    for (double r = span.enter; r < span.leave;) {
      const std::size_t a =
          next[0] < next[1] ? (next[0] < next[2] ? 0 : 2) : (next[1] < next[2] ? 1 : 2);
      const double to = std::clamp(next[a], r, span.leave);
      if (to > r) visit(cell[0], cell[1], cell[2], r, to);
      r = to;
      cell[a] += step[a];
      if (cell[a] < 0 || cell[a] >= count[a]) return;
      next[a] += stride[a];
    }
  }
};

}  // namespace host
