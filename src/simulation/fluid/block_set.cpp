#include "simulation/fluid/block_set.h"

namespace nbx {

BlockSet::BlockSet(const Vec3i& dims, bool all) {
  std::size_t count = 1;
  for (int a = 0; a < 3; ++a) {
    blocks_[a] = (dims[a] + kEdges[a] - 1) / kEdges[a];
    count *= blocks_[a];
  }
  flags_.assign(count, all);
}

BlockSet::BlockSet(const Vec3i& dims, const Occupancy& held) : BlockSet(dims, false) {
  for (int k = 0; k < dims[2]; ++k)
    for (int j = 0; j < dims[1]; ++j) {
      const std::ptrdiff_t begin = std::ptrdiff_t{dims[0]} * (j + std::ptrdiff_t{dims[1]} * k);
      std::uint8_t* const flags = row(j, k);
      held.for_held(begin, begin + dims[0], [&](std::ptrdiff_t first, std::ptrdiff_t last) {
        std::fill(flags + (first - begin) / kEdges[0], flags + (last - 1 - begin) / kEdges[0] + 1,
                  1);
      });
    }
}

bool BlockSet::covers(int begin, int end, int j, int k) const {
  if (flags_.empty()) return false;
  const std::uint8_t* const flags = row(j, k);
  return std::find(flags + begin / kEdges[0], flags + (end - 1) / kEdges[0] + 1, 0) ==
         flags + (end - 1) / kEdges[0] + 1;
}

bool BlockSet::all() const { return std::find(flags_.begin(), flags_.end(), 0) == flags_.end(); }

double BlockSet::share() const {
  const auto in = flags_.size() - std::count(flags_.begin(), flags_.end(), 0);
  return flags_.empty() ? 0 : static_cast<double>(in) / static_cast<double>(flags_.size());
}

BlockSet& BlockSet::operator|=(const BlockSet& other) {
  if (flags_.empty()) return *this = other;
  for (std::size_t b = 0; b < flags_.size(); ++b) flags_[b] |= other.flags_[b];
  return *this;
}

BlockSet BlockSet::grown(const Vec3i& cells) const {
  BlockSet result = *this;
  std::size_t stride = 1;
  for (int a = 0; a < 3; ++a) {
    const std::vector<std::uint8_t> before = result.flags_;
    const int n = blocks_[a], reach = std::min((cells[a] + kEdges[a] - 1) / kEdges[a], n);
    for (std::size_t b = 0; b < before.size(); ++b) {
      if (!before[b]) continue;
      const int at = static_cast<int>(b / stride % n);
      int lo = std::max(at - reach, 0), hi = std::min(at + reach, n - 1);
      if (lo == 1) lo = 0;
      if (hi == 0) hi = std::min(1, n - 1);
      if (hi == n - 2) hi = n - 1;
      if (lo == n - 1) lo = std::max(n - 2, 0);
      for (int to = lo; to <= hi; ++to)
        result.flags_[b + (to - at) * static_cast<std::ptrdiff_t>(stride)] = 1;
    }
    stride *= n;
  }
  return result;
}

}  // namespace nbx
