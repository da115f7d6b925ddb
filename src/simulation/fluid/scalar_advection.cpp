#include "simulation/fluid/scalar_advection.h"

#include <algorithm>
#include <cmath>

#include "math/field_pool.h"
#include "math/field_reductions.h"
#include "simulation/field_planes.h"
#include "simulation/fluid/channel_walls.h"
#include "simulation/fluid/cpu_advection.h"
#include "simulation/fluid/gas_marks.h"

namespace nbx {

namespace {

template <class OfRow>
void for_rows(const Field<float>& f, const OfRow& of_row) {
  const int ny = f.ny(), nz = f.nz();
#pragma omp parallel for schedule(static) if (f.count() > kSmallField)
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j) of_row(j, k);
}

// 0 in the outer cells of the blocks.
void clear_border(Field<float>& f, const BlockSet& blocks) {
  const Vec3i n = f.dims();
  for_rows(f, [&](int j, int k) {
    float* const row = &f(0, j, k);
    const bool outer = j == 0 || j == n[1] - 1 || k == 0 || k == n[2] - 1;
    blocks.for_each(j, k, 0, n[0], [&](int begin, int end) {
      if (outer) return std::fill(row + begin, row + end, 0.0f);
      if (begin == 0) row[0] = 0;
      if (end == n[0]) row[n[0] - 1] = 0;
    });
  });
}

// 0 in the blocks of `where` that aren't in `kept`.
void clear_between(Field<float>& f, const BlockSet& where, const BlockSet& kept) {
  for_rows(f, [&](int j, int k) {
    float* const row = &f(0, j, k);
    where.for_each(j, k, 0, f.nx(), [&](int first, int last) {
      kept.for_each(
          j, k, first, last, [](int, int) {},
          [&](int begin, int end) { std::fill(row + begin, row + end, 0.0f); });
    });
  });
}

// How far from a cell the samples of its traces may read, along each axis.
Vec3i reach(const AdvectionParams& params) {
  constexpr int kStencil = 3;  // a cubic sample reads 2 cells on; one more for rounding
  Vec3i cells;
  for (int a = 0; a < 3; ++a) {
    const double speed = infnorm(params.velocity[a]->read_cpu());
    const double way = speed * std::abs(params.dt) / params.dx;
    // The tracers must not overflow either. NaN is unbounded.
    const bool bounded = way < 1e6 && speed < 1e30;
    cells[a] = bounded ? static_cast<int>(way) + kStencil : 1 << 20;
  }
  return cells;
}

// Moves `src` to `dst` in the blocks that are returned. Elsewhere `src` is 0, and so is what moves
// there; `dst` isn't written.
BlockSet advect_gas(Field<float>& dst, Field<float>& src, AdvectionParams& params) {
  const auto extend = [&](Field<float>& f) {
    if (params.domain) extend_to_walls(f, *params.domain);
  };
  const Vec3i n = src.dims();
  if (!params.scalar_reach) params.scalar_reach = reach(params);
  const Vec3i& cells = *params.scalar_reach;
  extend(src);
  const BlockSet held =
      params.held ? BlockSet(n, *params.held).grown({1, 1, 1}) : BlockSet(n, true);
  const GasMarks gas(src, held);
  const BlockSet first = gas.blocks().grown(cells);

  const FieldHandle handle = acquire_field(n);
  Field<float>& hat = *handle;
  cpu_advect_sl(hat, src, params, {gas.near(), &first});
  clear_border(hat, first);
  extend(hat);
  const GasMarks moved(hat, first);
  BlockSet second = gas.blocks();
  second |= moved.blocks();
  second = second.grown(cells);
  clear_between(hat, second.grown(cells), first);
  cpu_maccormack(dst, src, hat, params, {moved.near(), &second});
  clear_border(dst, second);
  return second;
}

}  // namespace

void cpu_advect_scalar(Field<float>& dst, Field<float>& src, AdvectionParams& params) {
  const BlockSet written = advect_gas(dst, src, params);
  clear_between(dst, BlockSet(dst.dims(), true), written);
}

void cpu_advect_scalar_in_place(Field<float>& field, Field<float>& scratch,
                                AdvectionParams& params) {
  const BlockSet written = advect_gas(scratch, field, params);
  // Copies what was written, or clears the rest: each moves less memory than the other.
  if (3 * written.share() > 1) {
    clear_between(scratch, BlockSet(field.dims(), true), written);
    return field.swap(scratch);
  }
  for_rows(field, [&](int j, int k) {
    written.for_each(j, k, 0, field.nx(), [&](int begin, int end) {
      std::copy(&scratch(begin, j, k), &scratch(begin, j, k) + (end - begin), &field(begin, j, k));
    });
  });
}

}  // namespace nbx
