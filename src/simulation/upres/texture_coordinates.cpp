#include "simulation/upres/texture_coordinates.h"

#include <algorithm>

#include "simulation/fluid_tools3d.h"
#include "simulation/upres/detail_kernels.h"
#include "simulation/upres/distortion.h"

namespace nbx {

namespace {

using Fields = std::array<Field<float>*, 3>;

/// Calls put(i, j, k) for the cells of a field, planes on all threads.
template <class Put>
void each_cell(const Vec3i& dims, int border, const Put& put) {
#pragma omp parallel for schedule(static)
  for (int k = border; k < dims[2] - border; ++k)
    for (int j = border; j < dims[1] - border; ++j)
      for (int i = border; i < dims[0] - border; ++i) put(i, j, k);
}

/// The coordinates of a cell at rest: its own place.
void put_to_rest(const Fields& tex, int i, int j, int k, const Vec3i& origin) {
  (*tex[0])(i, j, k) = static_cast<float>(i + origin[0]);
  (*tex[1])(i, j, k) = static_cast<float>(j + origin[1]);
  (*tex[2])(i, j, k) = static_cast<float>(k + origin[2]);
}

Fields written(TextureCoordinates& tex) {
  return {&tex.tex_x.write_cpu(), &tex.tex_y.write_cpu(), &tex.tex_z.write_cpu()};
}

}  // namespace

void TextureCoordinates::clear() {
  for (MField* tex : all()) tex->release();
}

void TextureCoordinates::cover(const IntBox& box) {
  if (box.empty()) return clear();
  const Vec3i origin = box.lo - Vec3i(1, 1, 1), dims = box.size() + Vec3i(2, 2, 2);
  const Vec3i delta = origin - tex_origin;
  tex_origin = origin;
  if (empty())
    init_tex_coords(dims);
  else
    redim_texcoords(delta, dims);
}

void TextureCoordinates::init_tex_coords(const Vec3i& dims) {
  for (MField* tex : all()) tex->resize(kCpu, dims);
  const Fields tex = written(*this);
  each_cell(dims, 0, [&](int i, int j, int k) { put_to_rest(tex, i, j, k, tex_origin); });
}

void TextureCoordinates::redim_texcoords(const Vec3i& delta, const Vec3i& dims) {
  const Vec3i before = tex_x.dims();
  if (delta == Vec3i() && dims == before) return;
  for (MField* tex : all()) tex->resize_offset(delta, dims, 0);
  const IntBox kept{-delta, before - delta - Vec3i(1, 1, 1)};
  const Fields tex = written(*this);
  each_cell(dims, 0, [&](int i, int j, int k) {
    if (!kept.contains({i, j, k})) put_to_rest(tex, i, j, k, tex_origin);
  });
}

void TextureCoordinates::advect(AdvectionParams params) {
  std::array<MField, 6> traces;
  for (int axis = 0; axis < 3; ++axis) {
    params.trace_back[axis] = &traces[axis];
    params.trace_fwd[axis] = &traces[3 + axis];
  }
  params.lookup = Lookup::kCenter;
  MField moved;
  for (MField* tex : all()) {
    nbx::advect(moved, *tex, params);
    tex->swap(moved);
  }
  clamp_borders();
}

void TextureCoordinates::regen_distorted() {
  const Fields tex = written(*this);
  const std::array<const Field<float>*, 3> map{tex[0], tex[1], tex[2]};
  const Vec3i dims = tex_x.dims();
  const FieldHandle distorted = acquire_field(dims);
  const int n = dims[0] - 2;
#pragma omp parallel for schedule(static)
  for (int k = 1; k < dims[2] - 1; ++k)
    for (int j = 1; j < dims[1] - 1; ++j) {
      const std::size_t first = distorted->index(1, j, k);
      float* const row = &(*distorted)[first];
      const float* const cells[3] = {&(*map[0])[first], &(*map[1])[first], &(*map[2])[first]};
      detail_kernels().doubt(row, cells, dims[0], std::ptrdiff_t{dims[0]} * dims[1],
                             kMostDistortion, n);
      // Values that aren't numbers count as distorted.
      for (int i = 0; i < n; ++i)
        if (row[i] != 0)
          row[i] = !(distortion(smallest_differences(map, first + i)) < kMostDistortion);
    }
  each_cell(dims, 1, [&](int i, int j, int k) {
    if ((*distorted)(i, j, k) != 0) put_to_rest(tex, i, j, k, tex_origin);
  });
  clamp_borders();
}

void TextureCoordinates::clamp_borders() {
  for (MField* tex : all()) clamp_border(tex->write_cpu());
}

}  // namespace nbx
