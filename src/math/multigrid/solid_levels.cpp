#include "math/multigrid/solid_levels.h"

#include <algorithm>

#include "math/multigrid/multigrid_solver3d_common.h"

namespace nbx {

namespace {

Vec3i dims(const LevelGrid& g) { return {g.nx, g.ny, g.nz}; }

std::ptrdiff_t place(const LevelGrid& g, const Vec3i& at) {
  return g.row(at[1], at[2]) + g.place(at[0]);
}

// Calls work(cell) for all cells of a level, ghosts included.
template <class Work>
void for_cells(const LevelGrid& g, const Work& work) {
#pragma omp parallel for schedule(static) if (g.cells() > kSmallLevel)
  for (int k = 0; k < g.nz; ++k)
    for (int j = 0; j < g.ny; ++j)
      for (int i = 0; i < g.nx; ++i) work(Vec3i(i, j, k));
}

// Which cells of a level are in solid. Coarse cell I lies on fine cell 2 I.
class Solid {
 public:
  Solid(const LevelGrid& g, const Field<float>& phi) : g_(g), phi_(phi) {
    for (int a = 0; a < 3; ++a)
      for (int n = phi.dims()[a]; n != dims(g)[a]; n = (n - 2) / 2 + 2) step_[a] *= 2;
  }
  /// Ghosts are in fluid.
  bool operator()(const Vec3i& at) const {
    Vec3i finest;
    for (int a = 0; a < 3; ++a) {
      if (at[a] == 0 || at[a] == dims(g_)[a] - 1) return false;
      finest[a] = at[a] * step_[a];
    }
    return !(phi_(finest[0], finest[1], finest[2]) > 0);
  }

 private:
  const LevelGrid& g_;
  const Field<float>& phi_;
  Vec3i step_{1, 1, 1};
};

// Whether the face below cell `at` is open, as far as solids go, and no wall.
bool passes(const LevelGrid& g, const Solid& solid, int axis, const Vec3i& at) {
  if (at[axis] == 0) return false;
  if (at[axis] == 1 && g.closed[2 * axis]) return false;
  if (at[axis] == dims(g)[axis] - 1 && g.closed[2 * axis + 1]) return false;
  Vec3i before = at;
  --before[axis];
  return !solid(at) && !solid(before);
}

// A coarse face is open if the fine faces between its two cells are.
float coarse_open(const LevelGrid& fine, int axis, const Vec3i& coarse_at) {
  Vec3i at;
  for (int a = 0; a < 3; ++a) at[a] = halves(dims(fine)[a]) ? 2 * coarse_at[a] : coarse_at[a];
  if (!halves(dims(fine)[axis])) return fine.open[axis][place(fine, at)];
  Vec3i before = at;
  --before[axis];
  const float open = fine.open[axis][place(fine, before)];
  // An even size leaves only one fine face before the far ghost.
  return at[axis] < dims(fine)[axis] ? open * fine.open[axis][place(fine, at)] : open;
}

bool has_open_face(const LevelGrid& g, const Vec3i& at) {
  for (int axis = 0; axis < 3; ++axis) {
    Vec3i above = at;
    ++above[axis];
    if (g.open[axis][place(g, at)] > 0 || g.open[axis][place(g, above)] > 0) return true;
  }
  return false;
}

}  // namespace

SolidLevels::SolidLevels(std::vector<LevelGrid>& levels, const Field<float>& phi) {
  for (std::size_t l = 0; l < levels.size(); ++l) {
    LevelGrid& g = levels[l];
    const LevelGrid* fine = l > 0 ? &levels[l - 1] : nullptr;
    const Solid solid(g, phi);
    for (int axis = 0; axis < 3; ++axis) {
      float* open = fields_.emplace_back(acquire_field(dims(g)))->data();
      const auto inner = [&](const Vec3i& at) {
        for (int a = 0; a < 3; ++a)
          if (at[a] == 0 || (a != axis && at[a] == dims(g)[a] - 1)) return false;
        return true;
      };
      for_cells(g, [&](const Vec3i& at) {
        const bool some = inner(at) && passes(g, solid, axis, at);
        open[place(g, at)] = !some ? 0.0f : fine ? coarse_open(*fine, axis, at) : 1.0f;
      });
      g.open[axis] = open;
    }
  }

  // One over the weight of the coarse cells in fluid: s is the weight of those in solid.
  for (std::size_t l = 0; l + 1 < levels.size(); ++l) {
    LevelGrid &g = levels[l], &below = levels[l + 1];
    const Solid solid(g, phi), solid_below(below, phi);
    float* s = fields_.emplace_back(acquire_field(dims(g)))->data();
    std::fill_n(s, g.cells(), 0.0f);
    for_cells(below,
              [&](const Vec3i& at) { below.x[place(below, at)] = solid_below(at) ? 1.0f : 0.0f; });
    LevelGrid weights = g;
    weights.x = s;
    Prolongate3D(weights, below);
    for_cells(g, [&](const Vec3i& at) {
      float& w = s[place(g, at)];
      w = solid(at) || !(w < 1) ? 0.0f : 1 / (1 - w);
    });
    g.inverse_weight = s;
  }
}

void SolidLevels::make_solvable(const LevelGrid& g) const {
  if (std::count(std::begin(g.closed), std::end(g.closed), 1) < 6) return;
  struct Sum {
    double b = 0;
    int cells = 0;
  };
  std::vector<Sum> planes(g.nz);
  const auto for_connected = [&](const auto& work) {
    for_cells(g, [&](const Vec3i& at) {
      for (int a = 0; a < 3; ++a)
        if (at[a] == 0 || at[a] == dims(g)[a] - 1) return;
      if (has_open_face(g, at)) work(at);
    });
  };
  for_connected([&](const Vec3i& at) {
    planes[at[2]].b += g.b[place(g, at)];
    ++planes[at[2]].cells;
  });
  Sum all;
  for (const Sum& plane : planes) all.b += plane.b, all.cells += plane.cells;
  if (all.cells == 0) return;
  const float mean = static_cast<float>(all.b / all.cells);
  for_connected([&](const Vec3i& at) { g.b[place(g, at)] -= mean; });
}

}  // namespace nbx
