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

}  // namespace nbx
