// The tracers: where the content of a sample comes from. Positions are in the grid of the advected
// field and in floats. For kernel files, on lanes of cells (math/lanes/lanes.h).
//
// The velocity at a midpoint outside of [1, n-2] on any axis isn't sampled. So every sample lies
// inside of all three components, even with NaN and infinite velocities, and none needs clamping.
#pragma once

#include <cmath>
#include <limits>

#include "math/lanes/near_sampling.h"
#include "simulation/fluid/advection_kernels.h"

namespace nbx::NBX_ISA {

struct Vector {
  F x, y, z;
};
inline Vector operator-(const Vector& a, const Vector& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vector operator*(F s, const Vector& a) { return {s * a.x, s * a.y, s * a.z}; }
inline Vector select(I mask, const Vector& a, const Vector& b) {
  return {select(mask, a.x, b.x), select(mask, a.y, b.y), select(mask, a.z, b.z)};
}

inline I inside(const Vector& p, int nx, int ny, int nz) {
  const auto within = [](F a, int n) { return (a >= 1.0f) & (a <= static_cast<float>(n - 2)); };
  return within(p.x, nx) & within(p.y, ny) & within(p.z, nz);
}

/// The nearest point inside, for lanes that have nothing to look up. NaN becomes 1.
inline Vector moved_inside(const Vector& p, int nx, int ny, int nz) {
  const auto within = [](F a, int n) {
    return min(max(a, splat(1.0f)), splat(static_cast<float>(n - 2)));
  };
  return {within(p.x, nx), within(p.y, ny), within(p.z, nz)};
}

/// U, V, W seen from a grid whose samples sit on the faces of axis `own`, or on centers (own = 3).
template <int own>
class Velocity {
 public:
  explicit Velocity(const TraceParams& q) : faces_{q.velocity[0], q.velocity[1], q.velocity[2]} {}

  /// At n samples from (i, j, k) on, without interpolation: the own component as it is, the others
  /// as the mean of the nearest faces.
  template <class Count>
  Vector at_sample(int i, int j, int k, Count n) const {
    return {component<0>(i, j, k, n), component<1>(i, j, k, n), component<2>(i, j, k, n)};
  }

  /// At points inside of the grid, trilinear.
  Vector at(const Vector& p) const {
    return {interpolated<0>(p), interpolated<1>(p), interpolated<2>(p)};
  }

 private:
  template <int axis, class Count>
  F component(int i, int j, int k, Count n) const {
    const KernelField& f = faces_[axis];
    const std::ptrdiff_t stride[4] = {1, f.nx, plane_of(f), 0};
    const float* p = f.data + i + j * stride[1] + k * stride[2];
    const auto pair = [&](const float* q) { return load(q, n) + load(q + stride[axis], n); };
    if constexpr (axis == own)
      return load(p, n);
    else if constexpr (own == 3)
      return pair(p) * 0.5f;
    else
      return (pair(p) + pair(p - stride[own])) * 0.25f;
  }

  // From a point on the advected grid to the grid of a component: half a cell up along the axis of
  // the component, half a cell down along the own axis of the advected grid.
  template <int axis>
  F interpolated(const Vector& p) const {
    const auto shifted = [](F a, int along) {
      if (axis == own) return a;
      return along == axis ? a + 0.5f : along == own ? a - 0.5f : a;
    };
    return near_linear(faces_[axis],
                       near_inner_cell(shifted(p.x, 0), shifted(p.y, 1), shifted(p.z, 2)),
                       NearMarks{});
  }

  KernelField faces_[3];
};

/// The explicit midpoint rule, p - s v(p - s/2 v(p)); an Euler step if the midpoint is outside.
template <int own>
struct RK2Tracer {
  static Vector trace(const TraceParams& q, const Velocity<own>& velocity, Vector p, Vector v) {
    const F s = splat(static_cast<float>(q.dt) / static_cast<float>(q.dx));
    const Vector m = p - (0.5f * s) * v;
    const I in = inside(m, q.nx, q.ny, q.nz);
    return p - s * select(in, velocity.at(moved_inside(m, q.nx, q.ny, q.nz)), v);
  }
};

/// Midpoint steps of at most `tolerance` voxels, until dt is used up or the path leaves the grid.
template <int own>
struct AdaptiveTracer {
  static Vector trace(const TraceParams& q, const Velocity<own>& velocity, Vector p, Vector v) {
    Clock clock(q);
    for (I active = splat(-1);;) {
      I last;
      const F h = clock.step(max(abs(v.z), max(abs(v.y), abs(v.x))), q, last);
      const Vector m = p - (0.5f * h) * v;
      const I in = inside(m, q.nx, q.ny, q.nz) & active;
      const Vector next = p - h * select(in, velocity.at(moved_inside(m, q.nx, q.ny, q.nz)), v);
      p = select(active, next, p);
      active &= in & ~last & inside(p, q.nx, q.ny, q.nz);
      if (!any(active)) return p;
      v = velocity.at(moved_inside(p, q.nx, q.ny, q.nz));
    }
  }

 private:
  // The time that each lane has left, in double precision.
  struct Clock {
    explicit Clock(const TraceParams& q) {
      for (double& r : remaining) r = std::abs(q.dt) / q.dx;
    }

    // The next step, with the sign of dt; `last` where it uses up the time. A path takes at most
    // kMaxSteps steps, however fast the flow. There are no branches, so that the loop is
    // vectorized.
    F step(F speed, const TraceParams& q, I& last) {
      const double tolerance = q.tolerance, shortest = std::abs(q.dt) / q.dx / kMaxSteps;
      const double sign = q.dt < 0 ? -1 : 1;
      float speeds[W], steps[W];
      std::int32_t lasts[W];
      store(speeds, speed, Full());
      for (int l = 0; l < W; ++l) {
        const double v = speeds[l], left = remaining[l];
        double h = v > 0 ? tolerance / v : std::numeric_limits<double>::infinity();
        h = shortest < h ? h : shortest;
        lasts[l] = h >= left ? -1 : 0;
        h = h >= left ? left : 2 * h >= left ? left * 0.5 : h;
        remaining[l] = left - h;
        steps[l] = sign * h;
      }
      std::memcpy(&last, lasts, sizeof last);
      return load(steps, Full());
    }

    static constexpr double kMaxSteps = 4096;
    double remaining[W];
  };
};

}  // namespace nbx::NBX_ISA
