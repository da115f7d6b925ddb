#include "math/occupancy.h"

#include <algorithm>
#include <atomic>
#include <bit>

namespace nbx {

namespace {

constexpr std::ptrdiff_t kBlock = 1 << 14;
// Below this number of elements, threads cost more time than they save.
constexpr std::ptrdiff_t kParallel = 1 << 16;

std::uint32_t bits(float x) { return std::bit_cast<std::uint32_t>(x); }

bool holds_any(const float* x, std::ptrdiff_t n) {
  std::uint32_t any = 0;
  for (std::ptrdiff_t i = 0; i < n; ++i) any |= bits(x[i]);
  return any != 0;
}

void keep_positive(float* x, std::ptrdiff_t n) {
  // Numbers below 0, -0 and NaN have greater bits than infinity.
  std::uint32_t changes = 0;
  for (std::ptrdiff_t i = 0; i < n; ++i) changes |= std::uint32_t{bits(x[i]) > 0x7f800000u};
  if (!changes) return;
  for (std::ptrdiff_t i = 0; i < n; ++i) x[i] = std::max(0.0f, x[i]);
}

void clear(float* x, std::ptrdiff_t n) {
  if (holds_any(x, n)) std::fill_n(x, n, 0.0f);
}

}  // namespace

void Occupancy::reset(const Field<float>& f) {
  parts_.assign((f.count() + kPart - 1) / kPart, 0);
  any_ = false;
}

void Occupancy::measure(const Field<float>& f) {
  reset(f);
  const std::ptrdiff_t n = f.count();
  bool any = false;
#pragma omp parallel for schedule(static) reduction(|| : any) if (n >= kParallel)
  for (std::ptrdiff_t block = 0; block < n; block += kBlock)
    for (std::ptrdiff_t i = block; i < std::min(block + kBlock, n); i += kPart) {
      const bool held = holds_any(f.data() + i, std::min(kPart, n - i));
      parts_[i / kPart] = held;
      any = any || held;
    }
  any_ = any;
}

void Occupancy::measure_positive(Field<float>& f) {
  reset(f);
  const std::ptrdiff_t nx = f.nx();
  const int ny = f.ny(), nz = f.nz();
  bool any = false;
#pragma omp parallel for schedule(static) reduction(|| : any) if (f.count() >= kParallel)
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j) {
      const std::ptrdiff_t begin = f.index(0, j, k), end = begin + nx;
      float* row = f.data() + begin;
      if (nx < 3 || j == 0 || j == ny - 1 || k == 0 || k == nz - 1) {
        clear(row, nx);
        continue;
      }
      clear(row, 1);
      clear(row + nx - 1, 1);
      keep_positive(row + 1, nx - 2);
      // Two rows may share a part.
      for (std::ptrdiff_t i = begin; i < end;) {
        const std::ptrdiff_t stop = std::min(i / kPart * kPart + kPart, end);
        if (holds_any(f.data() + i, stop - i)) {
          std::atomic_ref(parts_[i / kPart]).store(1, std::memory_order_relaxed);
          any = true;
        }
        i = stop;
      }
    }
  any_ = any;
}

}  // namespace nbx
