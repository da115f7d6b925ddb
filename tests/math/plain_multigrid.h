// A plain form of the multigrid solver: natural rows, one loop per step, ghosts set before each
// sweep, all intermediate fields stored. The solver must give the same bits.
#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "math/field.h"
#include "support/support.h"

namespace nbx::test {

class PlainMultigrid {
 public:
  PlainMultigrid(const Vec3i& dims, const std::array<int, 6>& bc) : bc_(bc) {
    Vec3i n = dims;
    std::array<double, 3> h{1, 1, 1};
    for (double s = 1;; s *= 2) {
      Level level{Field<float>(n[0], n[1], n[2]), Field<float>(n[0], n[1], n[2]),
                  Field<float>(n[0], n[1], n[2]), s, h};
      levels_.push_back(std::move(level));
      if (n == Vec3i(3, 3, 3)) break;
      for (int a = 0; a < 3; ++a) {
        const int inner = n[a] - 2;
        if (inner % 2 == 1 && inner != 1) h[a] += s;
        n[a] = std::max(inner / 2, 1) + 2;
      }
    }
  }

  /// Runs V-cycles on x and returns the residual's norm.
  float solve(Field<float>& x, const Field<float>& b, int cycles) {
    Level& top = levels_[0];
    top.x.copy(x);
    top.b.copy(b);
    for (int c = 0; c < cycles; ++c) v_cycle(0);
    boundary(top.x);
    x.copy(top.x);
    float norm = 0;
    each_cell(top.x.dims(), 1, [&](int i, int j, int k) {
      norm = std::max(norm, std::abs(residual(top, i, j, k)));
    });
    return norm;
  }

 private:
  struct Level {
    Field<float> x, b, r;
    double s;
    std::array<double, 3> h;
  };

  void boundary(Field<float>& x) const {
    for (int axis = 0; axis < 3; ++axis)
      each_cell(x.dims(), 0, [&](int i, int j, int k) {
        Vec3i in(i, j, k);
        const bool high = in[axis] == x.dims()[axis] - 1;
        if (in[axis] != 0 && !high) return;
        in[axis] += high ? -1 : 1;
        const bool closed = bc_[2 * axis + high] == 1;
        x(i, j, k) = closed ? x(in[0], in[1], in[2]) : 0;
      });
  }

  // The weights of the neighbors of a cell and their sum with the values.
  struct Stencil {
    double center, sum;
  };
  static Stencil stencil(const Level& l, int i, int j, int k) {
    double center = 0, pairs[3];
    for (int a = 0; a < 3; ++a) {
      Vec3i low(i, j, k), high = low;
      --low[a], ++high[a];
      const bool last = high[a] == l.x.dims()[a] - 1;
      const double h = l.h[a];
      const double wl = last ? l.s * l.s * 2 / (l.s * (l.s + h)) : 1;
      const double wh = last ? l.s * l.s * 2 / (h * (l.s + h)) : 1;
      center += wl + wh;
      pairs[a] = wl * static_cast<double>(l.x(low[0], low[1], low[2])) +
                 wh * static_cast<double>(l.x(high[0], high[1], high[2]));
    }
    return {center, (pairs[0] + pairs[1]) + pairs[2]};
  }

  static float residual(const Level& l, int i, int j, int k) {
    const Stencil a = stencil(l, i, j, k);
    return static_cast<float>(static_cast<double>(l.b(i, j, k)) -
                              (a.center * static_cast<double>(l.x(i, j, k)) - a.sum));
  }

  void smooth(Level& l, int sweeps) const {
    for (int sweep = 0; sweep < sweeps; ++sweep) {
      boundary(l.x);
      for (int color = 0; color < 2; ++color)
        each_cell(l.x.dims(), 1, [&](int i, int j, int k) {
          if ((i + j + k) % 2 != color) return;
          const Stencil a = stencil(l, i, j, k);
          l.x(i, j, k) =
              static_cast<float>((static_cast<double>(l.b(i, j, k)) + a.sum) * (1 / a.center));
        });
    }
  }

  // Fills the odd positions of r along one axis from their neighbors.
  static void interpolate(Level& l, const Level& coarse, int axis) {
    Field<float>& r = l.r;
    const int n = r.dims()[axis];
    if (n == coarse.r.dims()[axis]) return;
    const auto a = static_cast<std::size_t>(axis);
    const double t = 1 - l.h[a] / coarse.h[a];
    each_cell(r.dims(), 0, [&](int i, int j, int k) {
      Vec3i low(i, j, k), high = low;
      const int at = low[axis];
      if (at % 2 == 0 || at == n - 1) return;
      --low[axis], ++high[axis];
      const float from = r(low[0], low[1], low[2]), to = r(high[0], high[1], high[2]);
      const double d = from;
      r(i, j, k) = n % 2 == 1 && at == n - 2
                       ? static_cast<float>(d + (static_cast<double>(to) - d) * t)
                       : (from + to) * 0.5f;
    });
  }

  void v_cycle(std::size_t at) {
    Level& l = levels_[at];
    if (at + 1 == levels_.size()) return smooth(l, 1);
    Level& below = levels_[at + 1];
    int f[3];
    for (int a = 0; a < 3; ++a) f[a] = l.x.dims()[a] == below.x.dims()[a] ? 1 : 2;

    smooth(l, 2);
    boundary(l.x);
    each_cell(below.x.dims(), 1, [&](int i, int j, int k) {
      below.b(i, j, k) = 2.0f * residual(l, i * f[0], j * f[1], k * f[2]);
    });
    for (std::size_t c = 0; c < below.x.count(); ++c) below.x[c] = 0;
    v_cycle(at + 1);
    boundary(below.x);
    for (std::size_t c = 0; c < l.r.count(); ++c) l.r[c] = 0;
    each_cell(below.x.dims(), 0, [&](int i, int j, int k) {
      l.r(std::min(i * f[0], l.r.nx() - 1), std::min(j * f[1], l.r.ny() - 1),
          std::min(k * f[2], l.r.nz() - 1)) = below.x(i, j, k);
    });
    for (int axis = 0; axis < 3; ++axis) interpolate(l, below, axis);
    for (std::size_t c = 0; c < l.x.count(); ++c) l.x[c] += l.r[c];
    smooth(l, 2);
  }

  std::array<int, 6> bc_;
  std::vector<Level> levels_;
};

}  // namespace nbx::test
