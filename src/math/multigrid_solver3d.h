// Geometric multigrid for the pressure's Poisson problem: red-black Gauss-Seidel V-cycles (Briggs,
// Henson, McCormick, A Multigrid Tutorial; Trottenberg et al., Multigrid). It handles any grid
// size: it coarsens down to one cell and uses a non-uniform stencil in the last cell of each axis.
//
// The problem, on the interior of a center grid: A x = b with A the negated unit-grid Laplacian,
// 6 x(c) - sum of the 6 neighbors. A closed face has zero gradient, an open one x = 0 in the ghost
// cells.
#pragma once

#include <array>
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

enum class SolveEnd { kConverged, kMaxCycles, kDiverging, kAborted };

/// What a solve achieved. The caller must check it.
struct [[nodiscard]] SolveResult {
  float residual = 0;  // infinity norm; NaN after a floating point error
  int cycles = 0;      // V-cycles done
  SolveEnd end = SolveEnd::kConverged;
};

/// Lives as long as a run; levels exist between `setup` and `clear`. All levels except the finest
/// are views into one buffer, so a solve allocates nothing. Sums are in double, storage is float.
/// Results have the same bits for any number of threads. For one thread at a time.
class MultigridSolver3D {
 public:
  /// Per domain face, in the order x-, x+, y-, y+, z-, z+: 1 = closed, else open.
  std::array<int, 6> bc{};

  /// Creates the levels for a center grid of these dimensions, ghosts included. `r0` is scratch of
  /// the same dimensions, `buffer` holds the coarse levels and is resized if it is too small. Both
  /// must live until `clear`. A grid with fewer than 3 cells on an axis gets no levels.
  void setup(int nx, int ny, int nz, Field<float>& r0, Field<float>& buffer);
  void clear();

  /// Improves x by at most `max_cycles` V-cycles until the residual is at or below `tolerance`, and
  /// sets its ghosts. Also stops when the residual has risen three times. `expected_cycles` is only
  /// for the progress. `b` is reordered during the solve and restored at its end. Throws the
  /// integer 0, which callers turn into an Exception, if there are no levels or the fields differ
  /// in dimensions.
  SolveResult solve(Field<float>& x, Field<float>& b, int expected_cycles, int max_cycles,
                    float tolerance, SolverProgress* progress);

  int level_count() const { return static_cast<int>(levels_.size()); }

 private:
  SolveResult iterate(int max_cycles, float tolerance, float residual);
  void v_cycle(std::size_t level, int gamma, int pre, int post);
  bool abort_requested() const;

  std::vector<LevelGrid> levels_;  // the finest first
  SolverProgress* progress_ = nullptr;
  int cycle_ = 0;
  int expected_cycles_ = 0;
};

}  // namespace nbx
