// One level of the multigrid solver.
//
// Rows are stored split: first the cells with even i, then those with odd i.
//
//     i        0  1  2  3  4  5  6                   0  2  4  6 | 1  3  5
//     stored   natural: x runs fastest               split, nx = 7
//
// The cells of one color in a row, i + j + k even or odd, are then neighbors in memory, and so are
// their own neighbors: those in y and z are at the same place of the same half, those in x at the
// same place of the other half and at the next one. A sweep over one color runs over plain arrays
// and reads and writes nothing that it doesn't need. The samples of the coarser grid, all at even
// i, are a plain array too.
#pragma once

#include <cstddef>

namespace nbx {

struct LevelGrid {
  float* x = nullptr;  // solution; its ghosts at open faces are 0
  float* b = nullptr;  // right-hand side
  float* r = nullptr;  // scratch of the steps
  int nx = 0, ny = 0, nz = 0;
  // Weights of the two neighbors of the last interior cell on an axis; 1 if its spacing equals that
  // of the other cells. All other weights are 1.
  double near[3] = {1, 1, 1}, far[3] = {1, 1, 1};
  double h[3] = {1, 1, 1};             // width of the last interval on each axis
  int closed[6] = {0, 0, 0, 0, 0, 0};  // faces x-, x+, y-, y+, z-, z+
  // True: the ghosts of closed faces hold copies, which a sweep reads. False: no step reads them.
  bool stale_ghosts = false;
  int first_color = 0;  // the color of the cells that a sweep smooths first, i + j + k even or odd
  // With solids, whether the face below each cell of an axis is open, 1, or not, 0; else null.
  // `inverse_weight` scales what is interpolated from the coarser level: one over the weight of the
  // coarse cells in fluid, 0 in solid.
  const float* open[3] = {nullptr, nullptr, nullptr};
  const char* near_solid = nullptr;  // per row j + ny k: whether any of its faces isn't open
  const float* inverse_weight = nullptr;

  std::size_t cells() const { return plane() * nz; }
  std::ptrdiff_t plane() const { return std::ptrdiff_t{nx} * ny; }
  std::ptrdiff_t row(int j, int k) const { return (std::ptrdiff_t{k} * ny + j) * nx; }
  /// The place in a row where the cells with odd i begin.
  int odd() const { return (nx + 1) / 2; }
  /// The place of cell i in its row.
  int place(int i) const { return (i & 1 ? odd() : 0) + i / 2; }
};

/// A level with fewer cells isn't worth a team of threads.
inline constexpr std::size_t kSmallLevel = 50000;

/// Whether the next coarser level has half as many cells on an axis of n cells, ghosts included.
/// One interior cell stays one.
inline bool halves(int n) { return n > 3; }

}  // namespace nbx
