#include "math/multigrid/solid_levels.h"

#include <algorithm>

#include "math/multigrid/multigrid_solver3d_common.h"

namespace nbx {

namespace {

Vec3i dims(const LevelGrid& g) { return {g.nx, g.ny, g.nz}; }

// Which cells of a level are in fluid. Coarse cell I lies on fine cell 2 I; ghosts are in fluid.
class Fluid {
 public:
  Fluid(const LevelGrid& g, const Field<float>& phi) : g_(g), phi_(phi) {
    for (int a = 0; a < 3; ++a)
      for (int n = phi.dims()[a]; n != dims(g)[a]; n = (n - 2) / 2 + 2) step_[a] *= 2;
  }
  /// A row in natural order: 1 in fluid, else 0.
  void row(float* out, int j, int k) const {
    std::fill_n(out, g_.nx, 1.0f);
    if (j == 0 || k == 0 || j == g_.ny - 1 || k == g_.nz - 1) return;
    const float* phi = &phi_(0, j * step_[1], k * step_[2]);
    for (int i = 1; i < g_.nx - 1; ++i) out[i] = phi[i * step_[0]] > 0 ? 1.0f : 0.0f;
  }
  /// Whether a cell of an inner row is in solid.
  bool has_solid(int j, int k) const {
    const float* phi = &phi_(0, j * step_[1], k * step_[2]);
    int solid = 0;
    if (step_[0] == 1)
      for (int i = 1; i < g_.nx - 1; ++i) solid |= static_cast<int>(!(phi[i] > 0));
    else
      for (int i = 1; i < g_.nx - 1; ++i) solid |= static_cast<int>(!(phi[i * step_[0]] > 0));
    return solid != 0;
  }

 private:
  const LevelGrid& g_;
  const Field<float>& phi_;
  Vec3i step_{1, 1, 1};
};

// Calls work(j, k) for all rows of a level, those in the ghost layer included.
template <class Work>
void for_rows(const LevelGrid& g, const Work& work) {
#pragma omp parallel for schedule(static) if (g.cells() > kSmallLevel)
  for (int k = 0; k < g.nz; ++k)
    for (int j = 0; j < g.ny; ++j) work(j, k);
}

// A coarse face is open if the fine faces between its two cells are.
float coarse_open(const LevelGrid& fine, int axis, const Vec3i& coarse_at) {
  const auto place = [&](const Vec3i& at) { return fine.row(at[1], at[2]) + fine.place(at[0]); };
  const float* fine_open = fine.open[axis];
  Vec3i at;
  for (int a = 0; a < 3; ++a) at[a] = halves(dims(fine)[a]) ? 2 * coarse_at[a] : coarse_at[a];
  if (!halves(dims(fine)[axis])) return fine_open[place(at)];
  Vec3i before = at;
  --before[axis];
  // An even size leaves only one fine face before the far ghost.
  const float last = at[axis] < dims(fine)[axis] ? fine_open[place(at)] : 1.0f;
  return fine_open[place(before)] * last;
}

// Finds the rows in which a face may be closed by a solid: those with solid in or beside them, and
// those that lie on or beside such rows of the finer level.
std::vector<char> rows_near_solid(const LevelGrid& g, const LevelGrid* fine, const Fluid& fluid) {
  std::vector<char> with_solid(std::size_t{1} * g.ny * g.nz), near(with_solid.size());
  const auto index = [](const LevelGrid& level, int j, int k) {
    return std::ptrdiff_t{k} * level.ny + j;
  };
  const auto inner = [&g](int j, int k) { return j > 0 && k > 0 && j < g.ny - 1 && k < g.nz - 1; };
  for_rows(g, [&](int j, int k) {
    if (inner(j, k)) with_solid[index(g, j, k)] = static_cast<char>(fluid.has_solid(j, k));
  });
  for_rows(g, [&](int j, int k) {
    if (!inner(j, k)) return;
    char& any = near[index(g, j, k)];
    for (int d = -1; d <= 1; ++d)
      any |= with_solid[index(g, j + d, k)] | with_solid[index(g, j, k + d)];
    if (!fine) return;
    const int J = halves(fine->ny) ? 2 * j : j, K = halves(fine->nz) ? 2 * k : k;
    for (int dk = -1; dk <= 1; ++dk)
      for (int dj = -1; dj <= 1; ++dj) any |= fine->near_solid[index(*fine, J + dj, K + dk)];
  });
  return near;
}

// Fills `open`, the faces below the cells along `axis`.
void fill_open(float* open, const LevelGrid& g, const LevelGrid* fine, const Fluid& fluid,
               int axis) {
  const auto near_solid = [&](int j, int k) {
    return g.near_solid[std::ptrdiff_t{k} * g.ny + j] != 0;
  };
  for_rows(g, [&](int j, int k) {
    float* out = open + g.row(j, k);
    const int shift = axis == 0 ? 1 : 0, end = g.nx - 1 + shift;
    const int j_before = j - (axis == 1), k_before = k - (axis == 2);
    const bool inner = j > 0 && k > 0 && (axis == 1 || j < g.ny - 1) && (axis == 2 || k < g.nz - 1);
    std::fill_n(out, g.nx, inner ? 1.0f : 0.0f);
    if (!inner) return;
    out[g.place(0)] = 0;
    if (end < g.nx) out[g.place(end)] = 0;
    if (!near_solid(j, k) && !near_solid(j_before, k_before)) return;
    std::vector<float> here(g.nx), before(g.nx);
    fluid.row(here.data(), j, k);
    fluid.row(before.data(), j_before, k_before);
    for (int i = 1; i < end; ++i) {
      const float between = here[i] * before[i - shift];
      out[g.place(i)] = fine ? between * coarse_open(*fine, axis, {i, j, k}) : between;
    }
  });
}

// Fills `inverse`: one over the weight of the coarse cells in fluid, from which a cell is
// interpolated. Uses x of the coarse level.
void fill_inverse_weight(float* inverse, const LevelGrid& g, const LevelGrid& below,
                         const Field<float>& phi) {
  const Fluid fluid(g, phi), fluid_below(below, phi);
  for_rows(below, [&](int j, int k) {
    std::vector<float> row(below.nx);
    fluid_below.row(row.data(), j, k);
    for (int i = 0; i < below.nx; ++i) below.x[below.row(j, k) + below.place(i)] = 1 - row[i];
  });
  LevelGrid in_solid = g;  // the weight of the coarse cells in solid
  in_solid.x = inverse;
  in_solid.inverse_weight = nullptr;
  clear_solution(in_solid);
  Prolongate3D(in_solid, below);
  for_rows(g, [&](int j, int k) {
    float* weights = inverse + g.row(j, k);
    int near = g.near_solid[std::ptrdiff_t{k} * g.ny + j] != 0 ? 1 : 0;
    for (int i = 0; i < g.nx; ++i) near |= weights[i] != 0 ? 1 : 0;
    if (near == 0) {
      std::fill_n(weights, g.nx, 1.0f);
      return;
    }
    std::vector<float> row(g.nx);
    fluid.row(row.data(), j, k);
    for (int i = 0; i < g.nx; ++i) {
      float& w = weights[g.place(i)];
      w = w < 1 ? row[i] / (1 - w) : 0;
    }
  });
}

bool has_open_face(const LevelGrid& g, int i, int j, int k) {
  const std::ptrdiff_t c = g.row(j, k) + g.place(i), east = g.row(j, k) + g.place(i + 1);
  return g.open[0][c] + g.open[0][east] + g.open[1][c] + g.open[1][c + g.nx] + g.open[2][c] +
             g.open[2][c + g.plane()] >
         0;
}

// Calls work(k, element) for the interior cells of a level that have an open face.
template <class Work>
void for_connected_cells(const LevelGrid& g, const Work& work) {
#pragma omp parallel for schedule(static) if (g.cells() > kSmallLevel)
  for (int k = 1; k < g.nz - 1; ++k)
    for (int j = 1; j < g.ny - 1; ++j)
      for (int i = 1; i < g.nx - 1; ++i)
        if (has_open_face(g, i, j, k)) work(k, g.row(j, k) + g.place(i));
}

}  // namespace

SolidLevels::SolidLevels(std::vector<LevelGrid>& levels, const Field<float>& phi) {
  // The finest level has fields of its own. The coarser ones share a field.
  std::size_t coarse_cells = 0;
  for (std::size_t l = 1; l < levels.size(); ++l) coarse_cells += levels[l].cells();
  constexpr int kPerCell = 4;
  float* next = nullptr;
  if (coarse_cells > 0) {
    fields_.push_back(acquire_field({static_cast<int>(kPerCell * coarse_cells), 1, 1}));
    next = fields_.back()->data();
  }
  const auto field = [&](const LevelGrid& g) {
    if (&g == &levels[0]) return fields_.emplace_back(acquire_field(dims(g)))->data();
    next += g.cells();
    return next - g.cells();
  };
  for (std::size_t l = 0; l < levels.size(); ++l) {
    LevelGrid& g = levels[l];
    const LevelGrid* fine = l > 0 ? &levels[l - 1] : nullptr;
    const Fluid fluid(g, phi);
    rows_.push_back(rows_near_solid(g, fine, fluid));
    g.near_solid = rows_.back().data();
    for (int axis = 0; axis < 3; ++axis) {
      float* open = field(g);
      fill_open(open, g, fine, fluid, axis);
      g.open[axis] = open;
    }
  }
  for (std::size_t l = 0; l + 1 < levels.size(); ++l) {
    float* inverse = field(levels[l]);
    fill_inverse_weight(inverse, levels[l], levels[l + 1], phi);
    levels[l].inverse_weight = inverse;
  }
}

void SolidLevels::make_solvable(const LevelGrid& g) const {
  if (std::count(std::begin(g.closed), std::end(g.closed), 1) < 6) return;
  struct Sum {
    double b = 0;
    int cells = 0;
  };
  std::vector<Sum> planes(g.nz);
  for_connected_cells(g, [&](int k, std::ptrdiff_t c) {
    planes[k].b += g.b[c];
    ++planes[k].cells;
  });
  Sum all;
  for (const Sum& plane : planes) all.b += plane.b, all.cells += plane.cells;
  if (all.cells == 0) return;
  const float mean = static_cast<float>(all.b / all.cells);
  for_connected_cells(g, [&](int, std::ptrdiff_t c) { g.b[c] -= mean; });
}

}  // namespace nbx
