#include "math/interpolation.h"

#include <array>

namespace nbx {

namespace {

using Weights = std::array<float, 4>;

// Catmull-Rom: the cubic through the four samples at -1, 0, 1, 2 with central slopes at 0 and 1.
Weights catmull_rom(float t) {
  const float t2 = t * t;
  return {(1.0f - 0.5f * t) * t2 - 0.5f * t, (1.5f * t - 2.5f) * t2 + 1.0f,
          (2.0f - 1.5f * t) * t2 + 0.5f * t, (0.5f * t - 0.5f) * t2};
}

float combine(const Weights& w, float a, float b, float c, float d) {
  return ((w[0] * a + w[1] * b) + w[2] * c) + w[3] * d;
}

// The same cubic, in Hermite form.
float hermite(const std::array<float, 4>& q, float t) {
  const float m0 = (q[2] - q[0]) * 0.5f;
  const float m1 = (q[3] - q[1]) * 0.5f;
  const float d = q[2] - q[1];
  return (((m0 + m1 - 2.0f * d) * t + 3.0f * d - 2.0f * m0 - m1) * t + m0) * t + q[1];
}

// Whether i - 1 .. i + 2 are cells of the axis, where i is the integer part of x. False for NaN.
bool fits(float x, int n) { return x >= 1.0f && x < static_cast<float>(n - 2); }

}  // namespace

float sample_cubic(const Field<float>& f, float x, float y, float z) {
  const float linear = sample_linear(f, x, y, z);
  if (!fits(x, f.nx()) || !fits(y, f.ny()) || !fits(z, f.nz())) return linear;
  const CellCoordinates c = linear_cell(f, x, y, z);
  const Weights wx = catmull_rom(c.tx);
  const Weights wy = catmull_rom(c.ty);
  std::array<float, 4> planes;
  for (int k = 0; k < 4; ++k) {
    std::array<float, 4> rows;
    for (int j = 0; j < 4; ++j) {
      const float* p = f.data() + f.index(c.i - 1, c.j - 1 + j, c.k - 1 + k);
      rows[j] = combine(wx, p[0], p[1], p[2], p[3]);
    }
    planes[k] = combine(wy, rows[0], rows[1], rows[2], rows[3]);
  }
  const float cubic = hermite(planes, c.tz);
  const auto [lo, hi] = corner_range(f, c);
  return cubic >= lo && cubic <= hi ? cubic : linear;
}

}  // namespace nbx
