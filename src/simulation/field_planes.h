// Visits planes of a field: the building blocks of all boundary operators. A plane has an axis and
// an index. Each cell of it is passed to a small functor, with the cell at the same place of
// another plane, `inner`.
#pragma once

#include <algorithm>

#include "math/field.h"

namespace nbx {

struct SetBorderOper {
  float value;
  void operator()(float& cell, float) const { cell = value; }
};
struct ClampBorderOper {
  void operator()(float& cell, float inner) const { cell = inner; }
};
// The order of the arguments lets NaN pass.
struct Min0Oper {
  void operator()(float& cell, float) const { cell = std::min(cell, 0.0f); }
};
struct Max0Oper {
  void operator()(float& cell, float) const { cell = std::max(cell, 0.0f); }
};

// Smaller planes and fields are processed by one thread.
inline constexpr int kSmallPlane = 4096;
inline constexpr std::size_t kSmallField = 50000;

template <class Oper>
void iterate_x_slice(Field<float>& f, int i, int inner, Oper oper) {
  const int ny = f.ny(), nz = f.nz();
#pragma omp parallel for schedule(static) if (ny * nz > kSmallPlane)
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j) oper(f(i, j, k), f(inner, j, k));
}

template <class Oper>
void iterate_y_slice(Field<float>& f, int j, int inner, Oper oper) {
  const int nx = f.nx(), nz = f.nz();
#pragma omp parallel for schedule(static) if (nx * nz > kSmallPlane)
  for (int k = 0; k < nz; ++k)
    for (int i = 0; i < nx; ++i) oper(f(i, j, k), f(i, inner, k));
}

template <class Oper>
void iterate_z_slice(Field<float>& f, int k, int inner, Oper oper) {
  const int nx = f.nx(), ny = f.ny();
#pragma omp parallel for schedule(static) if (nx * ny > kSmallPlane)
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) oper(f(i, j, k), f(i, j, inner));
}

template <class Oper>
void iterate_slice(Field<float>& f, int axis, int layer, int inner, Oper oper) {
  if (axis == 0)
    iterate_x_slice(f, layer, inner, oper);
  else if (axis == 1)
    iterate_y_slice(f, layer, inner, oper);
  else
    iterate_z_slice(f, layer, inner, oper);
}

template <class Oper>
void iterate_slice(Field<float>& f, int axis, int layer, Oper oper) {
  iterate_slice(f, axis, layer, layer, oper);
}

/// What clamp_border does to plane k and to the outer planes next to it. The field has at least
/// three planes across each axis, and k is none of the outer ones.
inline void clamp_plane(Field<float>& f, int k) {
  const int nx = f.nx(), ny = f.ny(), nz = f.nz();
  for (int j = 1; j < ny - 1; ++j) {
    float* row = &f(0, j, k);
    row[0] = row[1];
    row[nx - 1] = row[nx - 2];
  }
  std::copy_n(&f(0, 1, k), nx, &f(0, 0, k));
  std::copy_n(&f(0, ny - 2, k), nx, &f(0, ny - 1, k));
  const std::ptrdiff_t plane = std::ptrdiff_t{1} * nx * ny;
  if (k == 1) std::copy_n(&f(0, 0, 1), plane, &f(0, 0, 0));
  if (k == nz - 2) std::copy_n(&f(0, 0, k), plane, &f(0, 0, nz - 1));
}

}  // namespace nbx
