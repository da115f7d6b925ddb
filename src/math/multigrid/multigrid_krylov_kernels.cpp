#include "math/multigrid/multigrid_krylov_kernels.h"

#include <cstdint>

namespace nbx::NBX_ISA {

namespace {

// Partial sums that run side by side.
constexpr int kSums = 16;

// The sum of term(i) over [0, n).
struct Sum {
  double lanes[kSums]{};
  double total() const {
    double sum = 0;
    for (const double lane : lanes) sum += lane;
    return sum;
  }
};

double product(float a, float b) { return static_cast<double>(a) * static_cast<double>(b); }

double dot(const float* a, const float* b, int n) {
  Sum sum;
  int i = 0;
  for (; i + kSums <= n; i += kSums)
    for (int l = 0; l < kSums; ++l) sum.lanes[l] += product(a[i + l], b[i + l]);
  for (int l = 0; i + l < n; ++l) sum.lanes[l] += product(a[i + l], b[i + l]);
  return sum.total();
}

template <class Cell>
DirectionProducts products(const float* q, const float* r, int n, Cell cell) {
  Sum rq, qq;
  const auto add = [&](int i, int l) {
    cell(i);
    rq.lanes[l] += product(r[i], q[i]);
    qq.lanes[l] += product(q[i], q[i]);
  };
  int i = 0;
  for (; i + kSums <= n; i += kSums)
    for (int l = 0; l < kSums; ++l) add(i + l, l);
  for (int l = 0; i + l < n; ++l) add(i + l, l);
  return {rq.total(), qq.total()};
}

DirectionProducts start(float* p, float* q, const float* z, const float* Az, const float* r,
                        int n) {
  __builtin_memcpy(p, z, n * sizeof(float));
  __builtin_memcpy(q, Az, n * sizeof(float));
  return products(q, r, n, [](int) {});
}

DirectionProducts turn(float* __restrict p, float* __restrict q, const float* __restrict z,
                       const float* __restrict Az, const float* __restrict r, float beta, int n) {
  return products(q, r, n, [&](int i) {
    p[i] = z[i] - beta * p[i];
    q[i] = Az[i] - beta * q[i];
  });
}

float advance(float* __restrict x, float* __restrict r, const float* __restrict p,
              const float* __restrict q, float alpha, int n) {
  // The bits of a float without its sign order as its magnitude does, with NaN above all numbers.
  std::int32_t largest = 0;
  for (int i = 0; i < n; ++i) {
    x[i] += alpha * p[i];
    r[i] -= alpha * q[i];
    const std::int32_t bits = __builtin_bit_cast(std::int32_t, r[i]) & 0x7fffffff;
    largest = bits > largest ? bits : largest;
  }
  return __builtin_bit_cast(float, largest);
}

}  // namespace

extern const MultigridKrylovKernels kMultigridKrylov;
const MultigridKrylovKernels kMultigridKrylov{dot, start, turn, advance};

}  // namespace nbx::NBX_ISA
