#include "host/render/surfaces/glow_grid.h"

namespace host {
namespace {

/// Cells along the longest side in the survey that finds the glow.
constexpr int kSurveyCells = 24;
/// Cells with less than this fraction of the strongest emission count as dark in the survey.
constexpr float kDim = 0.01F;
/// Bricks with less than this fraction of the strongest power get no directions.
constexpr float kWeak = 0.002F;
/// GlowGrid::faint_ as a fraction of the typical emission.
constexpr double kFaint = 0.0005;

/// Interleaves the bits of three brick numbers, so that neighbors mostly follow each other
/// (G. M. Morton, 1966).
std::uint32_t CurvePlace(const std::array<int, 3>& cell) {
  std::uint32_t place = 0;
  for (int bit = 0; bit < 8; ++bit)
    for (int a = 0; a < 3; ++a)
      place |= (static_cast<std::uint32_t>(cell[a] / GlowGrid::kBrickSide) >> bit & 1U)
               << (3 * bit + a);
  return place;
}

/// Calls visit(i, j, k) for each cell, in the order of their indices.
template <typename Visit>
void ForCells(const std::array<int, 3>& count, Visit visit) {
  for (int k = 0; k < count[2]; ++k)
    for (int j = 0; j < count[1]; ++j)
      for (int i = 0; i < count[0]; ++i) visit(i, j, k);
}

/// Probes a cell through its center, from side to side, along `axes` axes from `axis` on.
GlowGrid::Segment MeasureCell(const CellLattice& lattice, const std::array<int, 3>& at, int axis,
                              int axes, const GlowGrid::Probe& probe) {
  GlowGrid::Segment result{{}, 0};  // emission and extinction per unit of length
  for (int n = 0; n < axes; ++n, axis = (axis + 1) % 3) {
    std::array<double, 3> p{at[0] + 0.5, at[1] + 0.5, at[2] + 0.5};
    p[axis] -= 0.5;
    const double length = lattice.edge[axis], share = 1 / (axes * length);
    const GlowGrid::Segment segment = probe(lattice.At(p[0], p[1], p[2]), axis, length);
    if (!IsFinite(segment.light) || !(segment.passing >= 0)) continue;
    // In a uniform segment, light = emission (1 - passing) / extinction.
    const double depth = -std::log(std::clamp(segment.passing, 1e-6, 1.0));
    const double source = depth > 1e-6 ? depth / -std::expm1(-depth) : 1;
    result.light = result.light + segment.light * (source * share);
    result.passing += depth * share;
  }
  return result;
}

}  // namespace

GlowGrid::GlowGrid(const Vector& low, const Vector& high, const Probe& probe) {
  haze_ = Survey(low, high, probe);
  float brightest = 0;
  for (const Cell& cell : haze_.cells) brightest = std::max(brightest, cell.Mean());
  if (brightest <= 0) return;
  for (Cell& cell : haze_.cells)
    if (cell.Mean() < kDim * brightest) cell.emission = {};
  Measure(haze_, probe);
  FormBricks();
}

/// Black cells that are roughly cubes: `most` cubes of side * side * side cells along the longest
/// side. None if the box is empty.
GlowGrid::Medium GlowGrid::Divide(const Vector& low, const Vector& high, int most, int side) {
  const Vector sides = high - low;
  const std::array<double, 3> size{sides.x, sides.y, sides.z};
  const double longest = std::max({size[0], size[1], size[2]});
  if (!(longest > 0) || !std::isfinite(longest)) return {};
  Medium medium{{.low = {low.x, low.y, low.z}}, {}};
  for (std::size_t a = 0; a < 3; ++a) {
    const int cubes = std::max(1, static_cast<int>(std::ceil(most * size[a] / longest - 1e-9)));
    medium.lattice.count[a] = side * cubes;
    medium.lattice.edge[a] = std::max(size[a], 1e-3 * longest) / medium.lattice.count[a];
  }
  medium.cells.resize(medium.lattice.Size());
  return medium;
}

GlowGrid::Medium GlowGrid::Survey(const Vector& low, const Vector& high, const Probe& probe) {
  Medium medium = Divide(low, high, kSurveyCells, 1);
  auto cell = medium.cells.begin();
  ForCells(medium.lattice.count, [&](int i, int j, int k) {
    *cell++ = Cell(MeasureCell(medium.lattice, {i, j, k}, 0, 3, probe));
  });
  return medium;
}

/// Measures the box of the cells that glow in the survey in fine cells. Cells further than one
/// coarse cell from them stay black.
void GlowGrid::Measure(const Medium& survey, const Probe& probe) {
  const CellLattice& coarse = survey.lattice;
  const std::array<int, 3>& count = coarse.count;
  std::array<int, 3> first = count, last{};
  std::vector<char> near(survey.cells.size());
  ForCells(count, [&](int i, int j, int k) {
    if (survey.cells[coarse.Index(i, j, k)].Mean() <= 0) return;
    const std::array<int, 3> at{i, j, k};
    for (std::size_t a = 0; a < 3; ++a)
      first[a] = std::min(first[a], at[a]), last[a] = std::max(last[a], at[a]);
    ForCells({3, 3, 3}, [&](int x, int y, int z) {
      const std::array<int, 3> n{i + x - 1, j + y - 1, k + z - 1};
      for (std::size_t a = 0; a < 3; ++a)
        if (n[a] < 0 || n[a] >= count[a]) return;
      near[coarse.Index(n[0], n[1], n[2])] = 1;
    });
  });
  Medium fine = Divide(coarse.At(first[0], first[1], first[2]),
                       coarse.At(last[0] + 1, last[1] + 1, last[2] + 1), kMostBricks, kBrickSide);
  lattice_ = fine.lattice;
  cells_ = std::move(fine.cells);
  auto cell = cells_.begin();
  ForCells(lattice_.count, [&](int i, int j, int k) {
    const std::array<int, 3> at{i, j, k};
    std::array<int, 3> c{};
    for (std::size_t a = 0; a < 3; ++a)
      c[a] = std::min(
          first[a] + static_cast<int>((at[a] + 0.5) * lattice_.edge[a] / coarse.edge[a]), last[a]);
    if (near[coarse.Index(c[0], c[1], c[2])])
      *cell = Cell(MeasureCell(lattice_, at, (i + j + k) % 3, 1, probe));
    ++cell;
  });
}

void GlowGrid::FormBricks() {
  double sum = 0, squares = 0;
  const std::array<int, 3>& count = lattice_.count;
  ForCells({count[0] / kBrickSide, count[1] / kBrickSide, count[2] / kBrickSide}, [&](int i, int j,
                                                                                      int k) {
    Brick brick;
    brick.first = {i * kBrickSide, j * kBrickSide, k * kBrickSide};
    std::size_t n = 0;
    double power = 0;
    ForCells({kBrickSide, kBrickSide, kBrickSide}, [&](int x, int y, int z) {
      const double emission =
          cells_[lattice_.Index(brick.first[0] + x, brick.first[1] + y, brick.first[2] + z)].Mean();
      power += emission;
      brick.sum[n++] = static_cast<float>(power);
      sum += emission, squares += emission * emission;
    });
    if (power > 0) bricks_.push_back(brick);
  });
  if (bricks_.empty()) return;
  float strongest = 0;
  for (const Brick& brick : bricks_) strongest = std::max(strongest, brick.sum.back());
  std::erase_if(bricks_, [&](const Brick& b) { return b.sum.back() < kWeak * strongest; });
  faint_ = kFaint * squares / sum;
  std::sort(bricks_.begin(), bricks_.end(), [](const Brick& a, const Brick& b) {
    return CurvePlace(a.first) < CurvePlace(b.first);
  });
  brick_of_.assign(cells_.size() / kBrickCells, static_cast<std::uint16_t>(bricks_.size()));
  double whole = 0;
  for (const Brick& brick : bricks_) {
    const std::array<int, 3>& c = brick.first;
    brick_of_[BrickIndex(c[0], c[1], c[2])] = static_cast<std::uint16_t>(lights_.size());
    constexpr double half = 0.5 * kBrickSide;
    const Vector center = lattice_.At(c[0] + half, c[1] + half, c[2] + half);
    lights_.push_back({static_cast<float>(center.x), static_cast<float>(center.y),
                       static_cast<float>(center.z), brick.sum.back()});
    center_ = center_ + center * brick.sum.back();
    whole += brick.sum.back();
  }
  center_ = center_ * (1 / whole);
}

}  // namespace host
