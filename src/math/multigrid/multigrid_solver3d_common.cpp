#include "math/multigrid/multigrid_solver3d_common.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include <omp.h>

#include "math/multigrid/multigrid_relax_kernels.h"
#include "math/multigrid/multigrid_transfer_kernels.h"
#include "util/isa.h"

NBX_DECLARE_ISA(MultigridRelaxKernels, kMultigridRelax)
NBX_DECLARE_ISA(MultigridTransferKernels, kMultigridTransfer)

namespace nbx {

const MultigridRelaxKernels& multigrid_relax_kernels() { return NBX_SELECT_ISA(kMultigridRelax); }
const MultigridTransferKernels& multigrid_transfer_kernels() {
  return NBX_SELECT_ISA(kMultigridTransfer);
}

namespace {

bool worth_threads(std::size_t cells) { return cells > kSmallLevel; }
bool worth_threads(const LevelGrid& g) { return worth_threads(g.cells()); }

// Cuts the interior planes of a level into slabs of at least `thickness`, one per thread.
struct Slabs {
  int count, planes;
  Slabs(const LevelGrid& g, int thickness) : count(1), planes(g.nz - 2) {
    if (worth_threads(g)) count = std::clamp(planes / thickness, 1, omp_get_max_threads());
  }
  /// First plane of a slab, or the one past the last slab.
  int first(int slab) const { return 1 + planes * slab / count; }
};

}  // namespace

void split_rows(Field<float>& f, float* scratch) {
  const auto split = multigrid_transfer_kernels().split_plane;
#pragma omp parallel for schedule(static) if (worth_threads(f.count()))
  for (int k = 0; k < f.nz(); ++k) {
    const std::size_t plane = f.index(0, 0, k);
    split(f.data() + plane, scratch + plane, f.nx(), f.ny());
  }
}

void merge_rows(Field<float>& f, float* scratch) {
  const auto merge = multigrid_transfer_kernels().merge_plane;
#pragma omp parallel for schedule(static) if (worth_threads(f.count()))
  for (int k = 0; k < f.nz(); ++k) {
    const std::size_t plane = f.index(0, 0, k);
    merge(f.data() + plane, scratch + plane, f.nx(), f.ny());
  }
}

void clear_solution(const LevelGrid& g) {
#pragma omp parallel for schedule(static) if (worth_threads(g))
  for (int k = 0; k < g.nz; ++k) std::fill_n(g.x + g.row(0, k), g.plane(), 0.0f);
}

// All sweeps in one pass over the planes, so that a level goes through the cache once. A stage is
// one color of one sweep. It needs the stage before it on the planes k - 1, k and k + 1, so stage s
// runs s planes behind stage 0. Where two slabs meet, each leaves out the cells that need cells of
// the other slab, and the gap is filled when both are done:
//
//     stage 3   3 3 3 3 . . . . . . 3 3 3 3
//     stage 2   2 2 2 2 2 . . . . 2 2 2 2 2
//     stage 1   1 1 1 1 1 1 . . 1 1 1 1 1 1
//     stage 0   0 0 0 0 0 0 0|0 0 0 0 0 0 0     k ->
//
// Every cell sees the same neighbors as if the stages ran one after the other.
void RBGS3D(int sweeps, const LevelGrid& g) {
  const auto smooth_plane = multigrid_relax_kernels().smooth_plane;
  const int stages = 2 * sweeps;
  const Slabs slabs(g, 2 * stages);
#pragma omp parallel if (slabs.count > 1) num_threads(slabs.count)
  {
#pragma omp for schedule(static, 1)
    for (int slab = 0; slab < slabs.count; ++slab) {
      const int first = slabs.first(slab), end = slabs.first(slab + 1);
      for (int front = first; front < end + stages - 1; ++front)
        for (int s = 0; s < stages; ++s) {
          const int k = front - s;
          const bool low_gap = slab > 0 && k < first + s;
          const bool high_gap = slab + 1 < slabs.count && k >= end - s;
          if (k >= first && k < end && !low_gap && !high_gap)
            smooth_plane(g, k, (s + g.first_color) & 1);
        }
    }
#pragma omp for schedule(static, 1)
    for (int slab = 1; slab < slabs.count; ++slab)
      for (int s = 1; s < stages; ++s)
        for (int k = slabs.first(slab) - s; k < slabs.first(slab) + s; ++k)
          smooth_plane(g, k, (s + g.first_color) & 1);
  }
}

float ResidualNorm3D(const LevelGrid& g) {
  const auto norm_plane = multigrid_relax_kernels().residual_norm_plane;
  // As integers the magnitudes order as they do as floats, with NaN above all.
  std::uint32_t largest = 0;
#pragma omp parallel for schedule(static) reduction(max : largest) if (worth_threads(g))
  for (int k = 1; k < g.nz - 1; ++k)
    largest = std::max(largest, std::bit_cast<std::uint32_t>(norm_plane(g, k)));
  return std::bit_cast<float>(largest);
}

void Restrict3D(const LevelGrid& coarse, const LevelGrid& fine) {
  const auto restrict_plane = multigrid_relax_kernels().restrict_plane;
#pragma omp parallel for schedule(static) if (worth_threads(fine))
  for (int K = 1; K < coarse.nz - 1; ++K) restrict_plane(coarse, fine, K);
}

namespace {

// Adds the interpolated coarse solution to the planes of one slab. Two planes of the fine scratch
// hold the coarse planes on both sides of the current one, interpolated in x and y.
void prolongate_slab(const LevelGrid& fine, const LevelGrid& coarse, int first, int end) {
  const MultigridTransferKernels& kernels = multigrid_transfer_kernels();
  int held[2] = {-1, -1};
  const auto expanded = [&](int K) {
    float* out = fine.r + fine.plane() * (first + (K & 1));
    if (held[K & 1] != K) kernels.expand_plane(out, fine, coarse, K);
    held[K & 1] = K;
    return out + fine.nx;
  };
  const int cells = fine.nx * (fine.ny - 2);
  for (int k = first; k < end; ++k) {
    const std::ptrdiff_t at = fine.row(1, k);
    float* x = fine.x + at;
    const bool on_plane = !halves(fine.nz) || k % 2 == 0, last = k == fine.nz - 2;
    const int below = halves(fine.nz) ? k / 2 : k, above = on_plane ? below : below + 1;
    const double t = last ? 1 - fine.h[2] / coarse.h[2] : 0.5;
    const float *a = expanded(below), *b = expanded(above);
    if (fine.inverse_weight)
      kernels.add_scaled(x, fine.inverse_weight + at, a, b, t, cells);
    else if (on_plane)
      kernels.add(x, a, cells);
    else if (!last)
      kernels.add_mean(x, a, b, cells);
    else
      kernels.add_between(x, a, b, t, cells);
  }
}

}  // namespace

void Prolongate3D(const LevelGrid& fine, const LevelGrid& coarse) {
  const Slabs slabs(fine, 4);
#pragma omp parallel for schedule(static, 1) if (slabs.count > 1) num_threads(slabs.count)
  for (int slab = 0; slab < slabs.count; ++slab)
    prolongate_slab(fine, coarse, slabs.first(slab), slabs.first(slab + 1));
}

void set_boundary_condition(Field<float>& x, const std::array<int, 6>& bc) {
  const int nx = x.nx(), ny = x.ny(), nz = x.nz();
  const auto face = [](float& ghost, float inner, int closed) { ghost = closed == 1 ? inner : 0; };
#pragma omp parallel for schedule(static) if (worth_threads(x.count()))
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j) {
      face(x(0, j, k), x(1, j, k), bc[0]);
      face(x(nx - 1, j, k), x(nx - 2, j, k), bc[1]);
    }
  for (int k = 0; k < nz; ++k)
    for (int i = 0; i < nx; ++i) {
      face(x(i, 0, k), x(i, 1, k), bc[2]);
      face(x(i, ny - 1, k), x(i, ny - 2, k), bc[3]);
    }
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) {
      face(x(i, j, 0), x(i, j, 1), bc[4]);
      face(x(i, j, nz - 1), x(i, j, nz - 2), bc[5]);
    }
}

}  // namespace nbx
