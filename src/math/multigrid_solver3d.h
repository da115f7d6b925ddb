// Geometric multigrid for the pressure's Poisson problem: red-black Gauss-Seidel V-cycles (Briggs,
// Henson, McCormick, A Multigrid Tutorial; Trottenberg et al., Multigrid). It handles any grid
// size: it coarsens down to one cell and uses a non-uniform stencil in the last cell of each axis.
//
// The problem, on the interior of a center grid: A x = b with A the negated unit-grid Laplacian,
// 6 x(c) - sum of the 6 neighbors. A closed face has zero gradient, an open one x = 0 in the ghost
// cells.
//
// Convergence: a cycle divides the residual by 14 with open faces, and by 5 or more in rooms.
//
// - A sweep leaves the ghosts of closed faces out, of the sum and of the center alike. A ghost is a
//   copy of its cell: read as a neighbor, the old copy would hold the cell back, most of all on the
//   coarse levels.
// - Restriction takes the samples at even i, j, k, where the color that was smoothed first has its
//   residual. On a level with one cell on exactly one axis the samples are of the other color, so
//   there the colors change places.
// - With closed faces or solids an outer iteration combines the corrections of the cycles
//   (multigrid/outer_iteration.h).
// - With solids the stencils of all levels know the closed faces (multigrid/solid_levels.h), and
// the
//   cycles are W-cycles.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "math/field.h"
#include "math/multigrid/multigrid_level.h"

namespace nbx {

/// Asked in each cycle whether to abort.
class SolverProgress {
 public:
  virtual ~SolverProgress() = default;
  virtual bool abort_requested(int done, int total) = 0;
};

class SolidLevels;

enum class SolveEnd { kConverged, kMaxCycles, kDiverging, kAborted };

/// What a solve achieved. The caller must check it.
struct [[nodiscard]] SolveResult {
  float residual = 0;  // infinity norm; NaN after a floating point error
  int cycles = 0;      // V-cycles done
  SolveEnd end = SolveEnd::kConverged;
};

/// Lives as long as a run; levels exist between `setup` and `clear`. All levels except the finest
/// are views into one buffer. The outer iteration and the solids take fields from the pool. Sums
/// are in double, storage is float. Results have the same bits for any number of threads. For one
/// thread at a time.
class MultigridSolver3D {
 public:
  MultigridSolver3D();
  ~MultigridSolver3D();

  /// Per domain face, in the order x-, x+, y-, y+, z-, z+: 1 = closed, else open.
  std::array<int, 6> bc{};

  /// True: sweeps read the ghosts of closed faces as they were at the start of the sweep, colors
  /// stay, and there is no outer iteration. A reference to compare with: behind walls its cycles
  /// divide the residual by less than 2.
  bool plain = false;

  /// Creates the levels for a center grid of these dimensions, ghosts included. `r0` is scratch of
  /// the same dimensions, `buffer` holds the coarse levels and is resized if it is too small. Both
  /// must live until `clear`. A grid with fewer than 3 cells on an axis gets no levels.
  void setup(int nx, int ny, int nz, Field<float>& r0, Field<float>& buffer);
  void clear();

  /// Restricts the following solves to the cells where phi > 0, with zero gradient across the faces
  /// to other cells, in which x is 0. Call it after `setup` and with the `bc` of the solves. `phi`
  /// has the dimensions of the grid and isn't kept. b must be 0 outside of the fluid.
  void set_solids(const Field<float>& phi);
  void clear_solids();

  /// Improves x by at most `max_cycles` V-cycles until the residual is at or below `tolerance`, and
  /// sets its ghosts. Also stops when the residual has risen three times. `expected_cycles` is only
  /// for the progress. Uses `b` up. Throws the integer 0, which callers turn into an Exception, if
  /// there are no levels or the fields differ in dimensions.
  SolveResult solve(Field<float>& x, Field<float>& b, int expected_cycles, int max_cycles,
                    float tolerance, SolverProgress* progress);

  int level_count() const { return static_cast<int>(levels_.size()); }

 private:
  void prepare_levels();
  bool needs_outer_iteration() const;
  SolveResult cycles(int max_cycles, float tolerance, float residual);
  SolveResult combined_cycles(int max_cycles, float tolerance, float residual);
  template <class Cycle>
  SolveResult iterate(int max_cycles, float tolerance, float residual, Cycle cycle);
  void v_cycle(std::size_t level, int gamma, int pre, int post);
  bool abort_requested() const;

  std::vector<LevelGrid> levels_;  // the finest first
  std::unique_ptr<SolidLevels> solids_;
  SolverProgress* progress_ = nullptr;
  int cycle_ = 0;
  int expected_cycles_ = 0;
};

}  // namespace nbx
