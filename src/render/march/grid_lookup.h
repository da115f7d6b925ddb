// Look-ups of fields at blocks of points, by the kernels.
#pragma once

#include "math/field.h"
#include "render/march/march_kernels.h"
#include "render/march/sample_block.h"

namespace nbx {

inline KernelField kernel_field(const Field<float>& f) {
  return {f.data(), f.nx(), f.ny(), f.nz()};
}

/// Trilinear at the nearest point of the grid. The grid must have 2 cells on each axis.
inline void sample_clamped(float* out, const Field<float>& field, const Points& points) {
  march_kernels().clamped(out, kernel_field(field), points.x, points.y, points.z, points.n);
}

/// The three components of a staggered velocity at points in cell coordinates. `look` decides about
/// points outside: MarchKernels::linear or clamped.
inline void sample_velocity(Colors& out, MarchKernels::Sample look, const Field<float>& U,
                            const Field<float>& V, const Field<float>& W, const Points& points) {
  alignas(64) float shifted[kBlock];
  const auto shift = [&](const float* a) {
    for (int i = 0; i < kBlock; ++i) shifted[i] = a[i] + 0.5f;
    return shifted;
  };
  look(out.c[0], kernel_field(U), shift(points.x), points.y, points.z, points.n);
  look(out.c[1], kernel_field(V), points.x, shift(points.y), points.z, points.n);
  look(out.c[2], kernel_field(W), points.x, points.y, shift(points.z), points.n);
}

}  // namespace nbx
