#include "math/field_resampling.h"

#include <algorithm>
#include <vector>

#include "math/interpolation.h"
#include "util/exception.h"

namespace nbx {

namespace {

// The coarse cell in which interior cell i of the fine grid lies, for i = 0 .. n - 1.
std::vector<int> coarse_cells(int n, int factor) {
  std::vector<int> cells(n);
  for (int i = 1; i < n; ++i) cells[i] = 1 + (i - 1) / factor;
  return cells;
}

// Along the normal, fine faces i0 and i0 + factor lie on coarse faces with the values a and b; face
// i0 + t between them gets
//
//     a + t / factor (b - a)
//
//     | a   .   .   | b   .        factor = 3
//       i0          i0 + 3
template <int axis>
void scale_up_face(Field<float>& dst, const Field<float>& src, int factor) {
  if (dst.dims() == src.dims()) return dst.copy(src);
  const Vec3i n = dst.dims();
  // Faces beyond the last one on a coarse face have no second value and stay unchanged.
  Vec3i end = n - Vec3i(1, 1, 1);
  end[axis] = n[axis] < 3 ? 0 : 2 + (n[axis] - 3) / factor * factor;
  std::vector<int> coarse[3];
  for (int a = 0; a < 3; ++a) {
    coarse[a] = coarse_cells(n[a], factor);
    if (end[a] > 1 && coarse[a][end[a] - 1] >= src.dims()[a])
      throw FieldDimensionMismatchException();
  }
  const float s = 1 / static_cast<float>(factor);
  const std::size_t step = src.index(axis == 0, axis == 1, axis == 2);

#pragma omp parallel for schedule(static)
  for (int k = 1; k < end[2]; ++k)
    for (int j = 1; j < end[1]; ++j) {
      float* row = dst.data() + dst.index(0, j, k);
      const float* from = src.data() + src.index(0, coarse[1][j], coarse[2][k]);
      for (int i = 1; i < end[0]; ++i) {
        const float* a = from + coarse[0][i];
        const int t = ((axis == 0 ? i : axis == 1 ? j : k) - 1) % factor;
        row[i] = t == 0 ? *a : *a + static_cast<float>(t) * s * (a[step] - *a);
      }
    }
}

}  // namespace

void scale_up_center(Field<float>& dst, const Field<float>& src, int factor) {
  if (dst.dims() == src.dims()) return dst.copy(src);
  // Fine cell 1 begins where coarse cell 1 does, half a coarse cell below its center.
  const float s = 1 / static_cast<float>(factor);
  const float o = s * 0.5f - 0.5f + 1;
  const auto coarse = [=](int i) { return static_cast<float>(i - 1) * s + o; };
  const auto inside = [](float x, int n) { return x >= 0 && x <= static_cast<float>(n - 1); };

#pragma omp parallel for schedule(static)
  for (int k = 1; k < dst.nz() - 1; ++k)
    for (int j = 1; j < dst.ny() - 1; ++j) {
      float* row = dst.data() + dst.index(0, j, k);
      const float y = coarse(j), z = coarse(k);
      const bool row_inside = inside(y, src.ny()) && inside(z, src.nz());
      for (int i = 1; i < dst.nx() - 1; ++i) {
        const float x = coarse(i);
        row[i] = row_inside && inside(x, src.nx()) ? sample_linear(src, x, y, z) : 0;
      }
    }
}

void scale_up_west(Field<float>& dst, const Field<float>& src, int factor) {
  scale_up_face<0>(dst, src, factor);
}

void scale_up_south(Field<float>& dst, const Field<float>& src, int factor) {
  scale_up_face<1>(dst, src, factor);
}

void scale_up_low(Field<float>& dst, const Field<float>& src, int factor) {
  scale_up_face<2>(dst, src, factor);
}

void create_gradient_field(Field<float>& field, int mode, const Vec3f& direction) {
  const Vec3f weights = mode == 0   ? Vec3f(1, 0, 0)
                        : mode == 1 ? Vec3f(0, 1, 0)
                        : mode == 2 ? Vec3f(0, 0, 1)
                                    : direction;
  const int nx = field.nx(), ny = field.ny(), nz = field.nz();
  if (nx < 3 || ny < 3 || nz < 3) return;  // no interior
  const auto ramp = [](int i, int n) {
    return static_cast<float>(i - 1) / static_cast<float>(n - 2);
  };
#pragma omp parallel for schedule(static)
  for (int k = 1; k < nz - 1; ++k)
    for (int j = 1; j < ny - 1; ++j)
      for (int i = 1; i < nx - 1; ++i)
        field(i, j, k) = dot(weights, Vec3f(ramp(i, nx), ramp(j, ny), ramp(k, nz)));

  // The ghost layer, edges and corners too.
  const auto inner = [](int i, int n) { return std::min(std::max(i, 1), n - 2); };
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; ++i) field(i, j, k) = field(inner(i, nx), inner(j, ny), inner(k, nz));
}

}  // namespace nbx
