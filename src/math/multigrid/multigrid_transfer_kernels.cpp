#include "math/multigrid/multigrid_transfer_kernels.h"

#include <cstring>

#include "util/isa.h"

namespace nbx::NBX_ISA {

namespace {

std::size_t bytes(int floats) { return floats * sizeof(float); }

void split_plane(float* plane, float* __restrict row, int nx, int ny) {
  const int odd = (nx + 1) / 2;
  for (int j = 0; j < ny; ++j) {
    float* __restrict out = plane + std::ptrdiff_t{j} * nx;
    std::memcpy(row, out, bytes(nx));
    for (int m = 0; m < nx / 2; ++m) {
      out[m] = row[2 * m];
      out[odd + m] = row[2 * m + 1];
    }
    if (nx & 1) out[nx / 2] = row[nx - 1];
  }
}

void merge_plane(float* plane, float* __restrict row, int nx, int ny) {
  const int odd = (nx + 1) / 2;
  for (int j = 0; j < ny; ++j) {
    float* __restrict out = plane + std::ptrdiff_t{j} * nx;
    std::memcpy(row, out, bytes(nx));
    for (int m = 0; m < nx / 2; ++m) {
      out[2 * m] = row[m];
      out[2 * m + 1] = row[odd + m];
    }
    if (nx & 1) out[nx - 1] = row[nx / 2];
  }
}

float mean(float a, float b) { return (a + b) * 0.5f; }
float between(float a, float b, double t) {
  const double low = a;
  return static_cast<float>(low + (b - low) * t);
}

// out = the values between two rows. For an odd size, the last position before the far ghost is at
// the fraction t of its interval.
void between_rows(float* __restrict out, const float* a, const float* b, int n) {
  for (int i = 0; i < n; ++i) out[i] = mean(a[i], b[i]);
}
void last_between_rows(float* __restrict out, const float* a, const float* b, double t, int n) {
  for (int i = 0; i < n; ++i) out[i] = between(a[i], b[i], t);
}

double last_fraction(const LevelGrid& fine, const LevelGrid& coarse, int axis) {
  return 1 - fine.h[axis] / coarse.h[axis];
}

// One coarse row, interpolated in x. Coarse cell I is fine cell 2 I, place I of the even half.
void expand_row(float* __restrict out, const LevelGrid& fine, const LevelGrid& coarse,
                const float* row) {
  const float* odd_in = row + coarse.odd();
  if (!halves(fine.nx)) {
    out[0] = out[1] = 0;  // the ghosts
    out[2] = odd_in[0];
    return;
  }
  const int last = coarse.nx - 2;
  out[0] = coarse.closed[0] ? odd_in[0] : 0;
  for (int I = 1; I <= last; I += 2) out[I] = odd_in[I / 2];
  for (int I = 2; I <= last; I += 2) out[I] = row[I / 2];
  float* __restrict odd = out + fine.odd();
  if (fine.nx & 1) {
    out[last + 1] = coarse.closed[1] ? out[last] : 0;
    for (int m = 0; m < last; ++m) odd[m] = mean(out[m], out[m + 1]);
    odd[last] = between(out[last], out[last + 1], last_fraction(fine, coarse, 0));
  } else {
    for (int m = 0; m < last; ++m) odd[m] = mean(out[m], out[m + 1]);
    odd[last] = 0;  // the ghost
  }
}

// For a ghost layer at a closed face its inner neighbor; at an open face, where values are 0, -1;
// else `at` itself.
int source_layer(int at, int n, int low_closed, int high_closed) {
  if (at == 0) return low_closed ? 1 : -1;
  if (at == n - 1) return high_closed ? n - 2 : -1;
  return at;
}

void expand_coarse_row(float* out, const LevelGrid& fine, const LevelGrid& coarse, int J, int K) {
  const int source = source_layer(J, coarse.ny, coarse.closed[2], coarse.closed[3]);
  if (source < 0)
    std::memset(out, 0, bytes(fine.nx));
  else
    expand_row(out, fine, coarse, coarse.x + coarse.row(source, K));
}

void expand_plane(float* out, const LevelGrid& fine, const LevelGrid& coarse, int coarse_k) {
  const int K = source_layer(coarse_k, coarse.nz, coarse.closed[4], coarse.closed[5]);
  if (K < 0) {
    std::memset(out, 0, bytes(fine.nx * fine.ny));
    return;
  }
  if (!halves(fine.ny)) {
    expand_coarse_row(out + fine.nx, fine, coarse, 1, K);
    return;
  }
  const auto row = [&](int j) { return out + std::ptrdiff_t{j} * fine.nx; };
  for (int J = 0; 2 * J < fine.ny; ++J) expand_coarse_row(row(2 * J), fine, coarse, J, K);
  for (int j = 1; j < fine.ny - 1; j += 2) {
    if (j == fine.ny - 2)
      last_between_rows(row(j), row(j - 1), row(j + 1), last_fraction(fine, coarse, 1), fine.nx);
    else
      between_rows(row(j), row(j - 1), row(j + 1), fine.nx);
  }
}

void add(float* __restrict x, const float* a, int n) {
  for (int i = 0; i < n; ++i) x[i] += a[i];
}
void add_mean(float* __restrict x, const float* a, const float* b, int n) {
  for (int i = 0; i < n; ++i) x[i] += mean(a[i], b[i]);
}
void add_between(float* __restrict x, const float* a, const float* b, double t, int n) {
  for (int i = 0; i < n; ++i) x[i] += between(a[i], b[i], t);
}

void add_scaled(float* __restrict x, const float* scale, const float* a, const float* b, double t,
                int n) {
  for (int i = 0; i < n; ++i) x[i] += scale[i] * between(a[i], b[i], t);
}

}  // namespace

extern const MultigridTransferKernels kMultigridTransfer;
const MultigridTransferKernels kMultigridTransfer{split_plane, merge_plane, expand_plane, add,
                                                  add_mean,    add_between, add_scaled};

}  // namespace nbx::NBX_ISA
