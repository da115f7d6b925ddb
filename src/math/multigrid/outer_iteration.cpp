#include "math/multigrid/outer_iteration.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include "math/field_operators.h"
#include "math/multigrid/multigrid_krylov_kernels.h"
#include "math/multigrid/multigrid_relax_kernels.h"
#include "util/isa.h"

NBX_DECLARE_ISA(MultigridKrylovKernels, kMultigridKrylov)

namespace nbx {

const MultigridKrylovKernels& multigrid_krylov_kernels() {
  return NBX_SELECT_ISA(kMultigridKrylov);
}

namespace {

// Calls work(k, first, n) for every interior plane: its rows without ghosts are the n floats from
// element `first` on.
template <class Work>
void for_planes(const LevelGrid& g, const Work& work) {
  const int n = g.nx * (g.ny - 2);
#pragma omp parallel for schedule(static) if (g.cells() > kSmallLevel)
  for (int k = 1; k < g.nz - 1; ++k) work(k, g.row(1, k), n);
}

// The planes' sums are added in order.
double total(const std::vector<double>& planes) {
  double sum = 0;
  for (const double plane : planes) sum += plane;
  return sum;
}

}  // namespace

OuterIteration::OuterIteration(LevelGrid& level) : g_(level), x_(level.x) {
  const Vec3i dims{g_.nx, g_.ny, g_.nz};
  z_ = acquire_field(dims);
  p_ = acquire_field(dims);
  q_ = acquire_field(dims);
  const auto apply = multigrid_relax_kernels().apply_plane;
  for_planes(g_, [&](int k, std::ptrdiff_t first, int n) {
    apply(g_.r, g_, k);
    for (std::ptrdiff_t c = first; c < first + n; ++c) g_.b[c] -= g_.r[c];
  });
  g_.x = z_->data();
}

OuterIteration::~OuterIteration() { g_.x = x_; }

void OuterIteration::start_cycle() { set(*z_, 0); }

float OuterIteration::finish_cycle() {
  const auto apply = multigrid_relax_kernels().apply_plane;
  const MultigridKrylovKernels& kernels = multigrid_krylov_kernels();
  float *Az = g_.r, *r = g_.b, *z = g_.x, *p = p_->data(), *q = q_->data();
  const bool first_direction = q_norm_ == 0;
  std::vector<double> rq(g_.nz), qq(g_.nz);

  for_planes(g_, [&](int k, std::ptrdiff_t first, int n) {
    apply(Az, g_, k);
    if (!first_direction) rq[k] = kernels.dot(Az + first, q + first, n);
  });
  const float beta = first_direction ? 0 : static_cast<float>(total(rq) / q_norm_);

  for_planes(g_, [&](int k, std::ptrdiff_t first, int n) {
    const DirectionProducts sums =
        first_direction
            ? kernels.start(p + first, q + first, z + first, Az + first, r + first, n)
            : kernels.turn(p + first, q + first, z + first, Az + first, r + first, beta, n);
    rq[k] = sums.rq;
    qq[k] = sums.qq;
  });
  q_norm_ = total(qq);
  const float alpha = q_norm_ > 0 ? static_cast<float>(total(rq) / q_norm_) : 0;

  std::vector<float> norms(g_.nz);
  for_planes(g_, [&](int k, std::ptrdiff_t first, int n) {
    norms[k] = kernels.advance(x_ + first, r + first, p + first, q + first, alpha, n);
  });
  const auto bits = [](float v) { return std::bit_cast<std::uint32_t>(v); };
  return *std::max_element(norms.begin(), norms.end(),
                           [&](float a, float b) { return bits(a) < bits(b); });
}

}  // namespace nbx
