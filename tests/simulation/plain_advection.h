// Advection written plainly, cell by cell: the fast loops must give the same bits.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "math/interpolation.h"
#include "simulation/fluid/advection.h"
#include "support/support.h"

namespace nbx::test {

/// U, V, W around a sample of the advected grid.
class PlainVelocity {
 public:
  explicit PlainVelocity(const AdvectionParams& params)
      : params_(params), axis_(static_cast<int>(params.lookup)) {}

  // At a sample: the own component as it is, the others as the mean of the nearest faces.
  Vec3f at_sample(int i, int j, int k) const {
    Vec3f v;
    for (int a = 0; a < 3; ++a) {
      const Field<float>& f = face(a);
      const auto value = [&](int along, int back) {  // `along` a, `back` along the own axis
        Vec3i c{i, j, k};
        c[a] += along;
        if (axis_ < 3) c[axis_] -= back;
        return f(c[0], c[1], c[2]);
      };
      if (a == axis_)
        v[a] = value(0, 0);
      else if (axis_ == 3)
        v[a] = (value(0, 0) + value(1, 0)) * 0.5f;
      else
        v[a] = ((value(0, 0) + value(1, 0)) + (value(0, 1) + value(1, 1))) * 0.25f;
    }
    return v;
  }

  Vec3f at(const Vec3f& p) const {
    Vec3f v;
    for (int a = 0; a < 3; ++a) {
      Vec3f q = p;
      if (a != axis_) {
        q[a] += 0.5f;
        if (axis_ < 3) q[axis_] -= 0.5f;
      }
      v[a] = sample_linear(face(a), q[0], q[1], q[2]);
    }
    return v;
  }

 private:
  const Field<float>& face(int a) const { return params_.velocity[a]->read_cpu(); }
  const AdvectionParams& params_;
  int axis_;  // of the advected grid's faces; 3 for centers
};

/// Whether p lies in [1, n-2] on every axis.
inline bool plain_inside(const Vec3f& p, const Vec3i& n) {
  for (int a = 0; a < 3; ++a)
    if (!(p[a] >= 1.0f && p[a] <= static_cast<float>(n[a] - 2))) return false;
  return true;
}

inline Vec3f plain_rk2(const PlainVelocity& velocity, const Vec3i& n, const Vec3i& c, double dt,
                       double dx) {
  const float s = static_cast<float>(dt) / static_cast<float>(dx);
  const Vec3f p = vector_cast<float>(c);
  const Vec3f v = velocity.at_sample(c[0], c[1], c[2]);
  const Vec3f m = p - (0.5f * s) * v;
  return p - s * (plain_inside(m, n) ? velocity.at(m) : v);
}

inline Vec3f plain_adaptive(const PlainVelocity& velocity, const Vec3i& n, const Vec3i& c,
                            double dt, double dx, double tolerance) {
  double remaining = std::abs(dt) / dx;
  const double shortest = remaining / 4096;
  Vec3f p = vector_cast<float>(c);
  Vec3f v = velocity.at_sample(c[0], c[1], c[2]);
  for (bool last = false; !last;) {
    const float limit = std::max({std::abs(v[0]), std::abs(v[1]), std::abs(v[2])});
    double h = limit > 0 ? tolerance / static_cast<double>(limit)
                         : std::numeric_limits<double>::infinity();
    h = std::max(shortest, h);
    if (h >= remaining) {
      h = remaining;
      last = true;
    } else if (2 * h >= remaining) {
      h = remaining / 2;
    }
    remaining -= h;
    const float step = dt < 0 ? -h : h;
    const Vec3f m = p - (0.5f * step) * v;
    const bool mid_inside = plain_inside(m, n);
    p = p - step * (mid_inside ? velocity.at(m) : v);
    if (!mid_inside || !plain_inside(p, n)) last = true;
    if (!last) v = velocity.at(p);
  }
  return p;
}

/// The two stages over the interior: `hat` with the given border, and `dst`, whose border is 0.
inline void plain_advect(Field<float>& hat, Field<float>& dst, const Field<float>& src,
                         const AdvectionParams& params, float border = -7) {
  const PlainVelocity velocity(params);
  const auto trace = [&](const Vec3i& c, bool forward) {
    const double dt = forward ? params.dt : -params.dt;
    return params.tracer == Tracer::kRK2
               ? plain_rk2(velocity, src.dims(), c, dt, params.dx)
               : plain_adaptive(velocity, src.dims(), c, dt, params.dx, params.tolerance);
  };
  const auto sample = [&](const Field<float>& f, const Vec3f& p) {
    return params.cubic ? sample_cubic(f, p[0], p[1], p[2]) : sample_linear(f, p[0], p[1], p[2]);
  };
  hat.resize(src.dims());
  dst.resize(src.dims());
  std::fill_n(hat.data(), hat.count(), border);
  std::fill_n(dst.data(), dst.count(), 0.0f);
  each_cell(src.dims(), 1, [&](int i, int j, int k) {
    hat(i, j, k) = sample(src, trace({i, j, k}, true));
  });
  each_cell(src.dims(), 1, [&](int i, int j, int k) {
    const Vec3f p1 = trace({i, j, k}, true), p2 = trace({i, j, k}, false);
    const float a = dst(i, j, k) = hat(i, j, k);
    if (!plain_inside(p1, src.dims()) || !plain_inside(p2, src.dims())) return;
    const float corrected = a - 0.5f * (sample(hat, p2) - src(i, j, k));
    const ValueRange range = corner_range(src, linear_cell(src, p1[0], p1[1], p1[2]));
    if (corrected >= range.lo && corrected <= range.hi) dst(i, j, k) = corrected;
  });
}

}  // namespace nbx::test
