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

GasMarks::GasMarks(const Field<float>& f, const BlockSet& where)
    : segments_((f.nx() + NearMarks::kSegment - 1) / NearMarks::kSegment),
      ny_(f.ny()),
      blocks_(where) {
  static_assert(BlockSet::kEdges[0] == NearMarks::kSegment);
  if (where.all() && seems_full(f)) return;
  const int nz = f.nz();
  near_.resize(std::size_t{1} * segments_ * ny_ * nz);
  const auto mark = advection_kernels().mark;
#pragma omp parallel for schedule(static) if (f.count() > kSmallField)
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny_; ++j)
      where.for_each(j, k, 0, f.nx(), [&](int begin, int end) {
        mark(&near_[index(begin / NearMarks::kSegment, j, k)], &f(begin, j, k), end - begin);
      });
  const std::size_t ordinary = std::count(near_.begin(), near_.end(), kValues);
  if (worth_marks(near_.size() - ordinary, near_.size())) {
    find_blocks(nz);
    sum_up(nz);
  } else {
    near_.clear();
    blocks_ = BlockSet(f.dims(), true);
  }
}

void GasMarks::find_blocks(int nz) {
  constexpr int kDepth = BlockSet::kEdges[2];
#pragma omp parallel for schedule(static) if (near_.size() > kSmallField)
  for (int first = 0; first < nz; first += kDepth) {
    for (int j = 0; j < ny_; j += BlockSet::kEdges[1])
      std::fill_n(blocks_.row(j, first), segments_, 0);
    for (int k = first; k < std::min(first + kDepth, nz); ++k)
      for (int j = 0; j < ny_; ++j) {
        const std::uint8_t* const marks = &near_[index(0, j, k)];
        std::uint8_t* const flags = blocks_.row(j, k);
        for (int s = 0; s < segments_; ++s) flags[s] |= marks[s] != kNothing;
      }
  }
}

// Axis by axis: each mark joins those from `back` before it to `ahead` after it, in bands of rows
// that have marks in reach.
void GasMarks::sum_up(int nz) {
  const std::ptrdiff_t plane = std::ptrdiff_t{segments_} * ny_;
  const BlockSet near = blocks_.grown({0, NearMarks::kAhead, NearMarks::kAhead});
  std::vector<std::uint8_t> before(near_.size());
  const auto join = [&](std::ptrdiff_t to, std::ptrdiff_t shift, std::ptrdiff_t n) {
    for (std::ptrdiff_t i = to; i < to + n; ++i) near_[i] |= before[i + shift];
  };
  const auto for_bands = [&](const auto& work) {
#pragma omp parallel for schedule(static) if (near_.size() > kSmallField)
    for (int k = 0; k < nz; ++k)
      for (int j = 0; j < ny_; j += BlockSet::kEdges[1]) {
        const std::uint8_t* const flags = near.row(j, k);
        if (std::any_of(flags, flags + segments_, [](std::uint8_t f) { return f != 0; }))
          work(j, std::min(j + BlockSet::kEdges[1], ny_), k);
      }
  };
  const auto for_rows = [&](const auto& work) {
    for_bands([&](int first, int last, int k) {
      const std::ptrdiff_t begin = index(0, first, k);
      std::copy_n(&near_[begin], std::ptrdiff_t{last - first} * segments_, &before[begin]);
    });
    for_bands(work);
  };
  const auto each_shift = [](const auto& work) {
    for (int d = -NearMarks::kBack; d <= NearMarks::kAhead; ++d)
      if (d != 0) work(d);
  };
  for_rows([&](int first, int last, int k) {
    for (int j = first; j < last; ++j)
      for (int d = 1; d < NearMarks::kSegments; ++d) join(index(0, j, k), d, segments_ - d);
  });
  for_rows([&](int first, int last, int k) {
    each_shift([&](int d) {
      const int from = std::max(first, -d), to = std::min(last, ny_ - d);
      join(index(0, from, k), std::ptrdiff_t{d} * segments_, std::ptrdiff_t{to - from} * segments_);
    });
  });
  for_rows([&](int first, int last, int k) {
    each_shift([&](int d) {
      if (k + d >= 0 && k + d < nz)
        join(index(0, first, k), d * plane, std::ptrdiff_t{last - first} * segments_);
    });
  });
}

}  // namespace nbx
