#include "math/multigrid/multigrid_relax_kernels.h"

#include "math/multigrid/multigrid_stencil.h"

namespace nbx::NBX_ISA {

namespace {

// x(c) = (b(c) + sum of the weighted neighbors) / center
void smooth_plane(const LevelGrid& g, int k, int color) {
  set_ghosts(g, k, color);
  for (int j = 1; j < g.ny - 1; ++j)
    for_half_row(g, j, k, (color + j + k) & 1, [](const HalfRow& c, const auto& w) {
      over_cells(c.count, [&](auto lane, int m) {
        using D = decltype(lane);
        const Terms<D> t = terms<D>(c, m, w);
        store(c.x + m, narrow((widen<D>(c.b + m) + t.neighbors) * inverse(t.center)));
      });
    });
}

// (A x)(c) = center x(c) - sum of the weighted neighbors
template <class D, class W>
inline D applied(const HalfRow& c, int m, const W& w) {
  const Terms<D> t = terms<D>(c, m, w);
  return t.center * widen<D>(c.x + m) - t.neighbors;
}

template <class D, class W>
inline auto residual(const HalfRow& c, int m, const W& w) {
  return narrow(widen<D>(c.b + m) - applied<D>(c, m, w));
}

void apply_plane(float* out, const LevelGrid& g, int k) {
  for (int j = 1; j < g.ny - 1; ++j) {
    float* row = out + g.row(j, k);
    row[g.place(0)] = row[g.place(g.nx - 1)] = 0;
    for (int parity = 0; parity < 2; ++parity)
      for_half_row(g, j, k, parity, [&](const HalfRow& c, const auto& w) {
        float* to = out + (c.x - g.x);
        over_cells(c.count, [&](auto lane, int m) {
          store(to + m, narrow(applied<decltype(lane)>(c, m, w)));
        });
      });
  }
}

// The largest magnitude so far. The bits of a float without its sign order as its magnitude does,
// with NaN above all numbers.
struct Magnitude {
  Ints lanes{};
  std::int32_t single = 0;

  void add(float r) {
    const auto bits = __builtin_bit_cast(std::int32_t, r) & 0x7fffffff;
    single = bits > single ? bits : single;
  }
  void add(Floats r) {
    const Ints bits = __builtin_bit_cast(Ints, r) & 0x7fffffff;
    lanes = bits > lanes ? bits : lanes;
  }
  float largest() const {
    std::int32_t bits = single;
    for (int i = 0; i < kLanes; ++i) bits = lanes[i] > bits ? lanes[i] : bits;
    return __builtin_bit_cast(float, bits);
  }
};

float residual_norm_plane(const LevelGrid& g, int k) {
  Magnitude norm;
  for (int color = 0; color < 2; ++color) set_ghosts(g, k, color);
  for (int j = 1; j < g.ny - 1; ++j)
    for (int parity = 0; parity < 2; ++parity)
      for_half_row(g, j, k, parity, [&](const HalfRow& c, const auto& w) {
        Magnitude row = norm;
        over_cells(c.count, [&](auto lane, int m) { row.add(residual<decltype(lane)>(c, m, w)); });
        norm = row;
      });
  return norm.largest();
}

void restrict_plane(const LevelGrid& coarse, const LevelGrid& fine, int coarse_k) {
  const int k = halves(fine.nz) ? 2 * coarse_k : coarse_k;
  // The cells with even i are the samples, or the one cell of an axis that isn't halved.
  const int parity = halves(fine.nx) ? 0 : 1;
  for (int color = 0; color < 2; ++color) set_ghosts(fine, k, color);
  for (int J = 1; J < coarse.ny - 1; ++J) {
    const int j = halves(fine.ny) ? 2 * J : J;
    float* samples = coarse.r + coarse.row(J, coarse_k);
    float* next = samples + 1;
    for_half_row(fine, j, k, parity, [&](const HalfRow& c, const auto& w) {
      over_cells(c.count,
                 [&](auto lane, int m) { store(next + m, residual<decltype(lane)>(c, m, w)); });
      next += c.count;
    });
    float* even = coarse.b + coarse.row(J, coarse_k);
    float* odd = even + coarse.odd();
    for (int m = 1; 2 * m < coarse.nx - 1; ++m) even[m] = 2 * samples[2 * m];
    for (int m = 0; 2 * m + 1 < coarse.nx - 1; ++m) odd[m] = 2 * samples[2 * m + 1];
  }
}

}  // namespace

extern const MultigridRelaxKernels kMultigridRelax;
const MultigridRelaxKernels kMultigridRelax{smooth_plane, apply_plane, residual_norm_plane,
                                            restrict_plane};

}  // namespace nbx::NBX_ISA
