#include "simulation/fluid/enclosed_regions.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "simulation/field_planes.h"

namespace nbx {

namespace {

// Sets of runs that touch; each is known by one of its members. The outside is one more member.
class Sets {
 public:
  explicit Sets(std::size_t count) : parent_(count) {
    std::iota(parent_.begin(), parent_.end(), std::size_t{0});
  }
  std::size_t find(std::size_t a) {
    while (parent_[a] != a) a = parent_[a] = parent_[parent_[a]];
    return a;
  }
  void join(std::size_t a, std::size_t b) { parent_[find(a)] = find(b); }

 private:
  std::vector<std::size_t> parent_;
};

}  // namespace

EnclosedRegions::EnclosedRegions(const Vec3i& center_dims, const Field<float>* phi,
                                 const std::array<int, 6>& closed) {
  if (phi) find(*phi, closed);
  if (phi || std::count(closed.begin(), closed.end(), 1) < 6) return;
  std::vector<Run>& all = regions_.emplace_back();
  for (int k = 1; k < center_dims[2] - 1; ++k)
    for (int j = 1; j < center_dims[1] - 1; ++j) all.push_back({j, k, 1, center_dims[0] - 1});
}

void EnclosedRegions::find(const Field<float>& phi, const std::array<int, 6>& closed) {
  const int nx = phi.nx(), ny = phi.ny(), nz = phi.nz();
  std::vector<std::vector<Run>> planes(nz);
#pragma omp parallel for schedule(static) if (phi.count() > kSmallField)
  for (int k = 1; k < nz - 1; ++k)
    for (int j = 1; j < ny - 1; ++j) {
      const float* row = &phi(0, j, k);
      for (int i = 1; i < nx - 1; ++i) {
        if (!(row[i] > 0)) continue;
        const int first = i;
        while (i < nx - 1 && row[i] > 0) ++i;
        planes[k].push_back({j, k, first, i});
      }
    }

  std::vector<Run> runs;
  std::vector<std::size_t> first_of_row(std::size_t{1} * ny * nz + 1);  // its place in `runs`
  for (int k = 0; k < nz; ++k)
    for (int j = 0, r = 0; j < ny; ++j) {
      first_of_row[std::size_t{1} * k * ny + j] = runs.size();
      for (const int count = static_cast<int>(planes[k].size()); r < count && planes[k][r].j == j;
           ++r)
        runs.push_back(planes[k][r]);
    }
  first_of_row.back() = runs.size();

  const std::size_t outside = runs.size();
  Sets sets(outside + 1);
  const auto join_with_row = [&](std::size_t r, std::size_t row) {
    for (std::size_t o = first_of_row[row]; o < first_of_row[row + 1]; ++o)
      if (runs[o].first < runs[r].end && runs[r].first < runs[o].end) sets.join(r, o);
  };
  for (std::size_t r = 0; r < runs.size(); ++r) {
    const Run& a = runs[r];
    const std::size_t row = std::size_t{1} * a.k * ny + a.j;
    join_with_row(r, row - 1);
    join_with_row(r, row - ny);
    const bool at_face[6] = {a.first == 1,  a.end == nx - 1, a.j == 1,
                             a.j == ny - 2, a.k == 1,        a.k == nz - 2};
    for (std::size_t face = 0; face < 6; ++face)
      if (at_face[face] && closed[face] != 1) sets.join(r, outside);
  }

  std::map<std::size_t, std::vector<Run>> enclosed;
  for (std::size_t r = 0; r < runs.size(); ++r)
    if (sets.find(r) != sets.find(outside)) enclosed[sets.find(r)].push_back(runs[r]);
  for (auto& [set, members] : enclosed) regions_.push_back(std::move(members));
}

double EnclosedRegions::remove_means(Field<float>& rhs) const {
  double removed = 0;
  for (const std::vector<Run>& region : regions_) {
    const std::ptrdiff_t count = region.size();
    const bool large = rhs.count() > kSmallField;
    // Every run has a sum of its own; they are added in order.
    std::vector<double> sums(region.size());
#pragma omp parallel for schedule(static) if (large)
    for (std::ptrdiff_t r = 0; r < count; ++r) {
      const float* row = &rhs(0, region[r].j, region[r].k);
      sums[r] = std::accumulate(row + region[r].first, row + region[r].end, 0.0);
    }
    const double sum = std::accumulate(sums.begin(), sums.end(), 0.0);
    std::ptrdiff_t cells = 0;
    for (const Run& run : region) cells += run.end - run.first;
    const float mean = static_cast<float>(sum / static_cast<double>(cells));
#pragma omp parallel for schedule(static) if (large)
    for (std::ptrdiff_t r = 0; r < count; ++r) {
      float* row = &rhs(0, region[r].j, region[r].k);
      for (int i = region[r].first; i < region[r].end; ++i) row[i] -= mean;
    }
    removed += sum;
  }
  return removed;
}

}  // namespace nbx
