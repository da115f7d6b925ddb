#include "simulation/fluid/gas_marks.h"

#include <algorithm>

#include "simulation/field_planes.h"
#include "simulation/fluid/advection_kernels.h"

namespace nbx {

namespace {

// The share of segments that must hold something other than ordinary values.
bool worth_marks(std::size_t special, std::size_t segments) { return special * 16 > segments; }

}  // namespace

bool seems_full(const Field<float>& f) {
  constexpr int kEvery = 8;
  std::vector<std::uint8_t> marks((f.nx() + NearMarks::kSegment - 1) / NearMarks::kSegment);
  const auto mark = advection_kernels().mark;
  std::size_t special = 0, seen = 0;
  for (int k = kEvery / 2; k < f.nz(); k += kEvery)
    for (int j = kEvery / 2; j < f.ny(); j += kEvery) {
      mark(marks.data(), &f(0, j, k), f.nx());
      seen += marks.size();
      special += marks.size() - std::count(marks.begin(), marks.end(), kValues);
    }
  return seen > 0 && !worth_marks(special, seen);
}

GasMarks::GasMarks(const Field<float>& f)
    : segments_((f.nx() + NearMarks::kSegment - 1) / NearMarks::kSegment), ny_(f.ny()) {
  const int nz = f.nz();
  near_.resize(std::size_t{1} * segments_ * ny_ * nz);
  const auto mark = advection_kernels().mark;
#pragma omp parallel for schedule(static) if (f.count() > kSmallField)
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny_; ++j) mark(&near_[index(0, j, k)], &f(0, j, k), f.nx());
  const std::size_t ordinary = std::count(near_.begin(), near_.end(), kValues);
  if (worth_marks(near_.size() - ordinary, near_.size()))
    sum_up(nz);
  else
    near_.clear();
}

// Axis by axis: each mark joins those from `back` before it to `ahead` after it.
void GasMarks::sum_up(int nz) {
  const std::ptrdiff_t plane = std::ptrdiff_t{segments_} * ny_;
  std::vector<std::uint8_t> before(near_.size());
  const auto join = [&](std::ptrdiff_t to, std::ptrdiff_t shift, std::ptrdiff_t n) {
    for (std::ptrdiff_t i = to; i < to + n; ++i) near_[i] |= before[i + shift];
  };
  const auto for_planes = [&](const auto& work) {
    before.swap(near_);
    near_ = before;
#pragma omp parallel for schedule(static) if (near_.size() > kSmallField)
    for (int k = 0; k < nz; ++k) work(k);
  };
  const auto each_shift = [](const auto& work) {
    for (int d = -NearMarks::kBack; d <= NearMarks::kAhead; ++d)
      if (d != 0) work(d);
  };
  for_planes([&](int k) {
    for (int j = 0; j < ny_; ++j)
      for (int d = 1; d < NearMarks::kSegments; ++d) join(index(0, j, k), d, segments_ - d);
  });
  for_planes([&](int k) {
    each_shift([&](int d) {
      const int first = std::max(0, -d), last = std::min(ny_, ny_ - d);
      join(index(0, first, k), std::ptrdiff_t{d} * segments_,
           std::ptrdiff_t{last - first} * segments_);
    });
  });
  for_planes([&](int k) {
    each_shift([&](int d) {
      if (k + d >= 0 && k + d < nz) join(k * plane, d * plane, plane);
    });
  });
}

}  // namespace nbx
