#include "math/multigrid_solver3d.h"

#include <algorithm>
#include <cstdint>

#include "math/field_operators.h"
#include "math/field_reductions.h"
#include "math/multigrid/multigrid_solver3d_common.h"
#include "math/multigrid/outer_iteration.h"
#include "math/multigrid/solid_levels.h"
#include "util/log.h"

namespace nbx {

namespace {

// Sizes of the levels with ghosts, the finest first. Interior sizes are halved and rounded down
// until one cell is left on each axis.
std::vector<Vec3i> level_dims(Vec3i dims) {
  std::vector<Vec3i> all{dims};
  while (halves(dims[0]) || halves(dims[1]) || halves(dims[2])) {
    for (int a = 0; a < 3; ++a) dims[a] = std::max((dims[a] - 2) / 2, 1) + 2;
    all.push_back(dims);
  }
  return all;
}

std::size_t cells(const Vec3i& dims) { return std::size_t{1} * dims[0] * dims[1] * dims[2]; }

// Floats of the three views of a level, each of which may start at the next aligned address.
std::size_t buffer_size(const Vec3i& dims) { return 3 * cells(dims) + 12; }

float* take_view(float*& next, const Vec3i& dims) {
  const auto address = reinterpret_cast<std::uintptr_t>(next);
  float* view = next + (16 - address % 16) % 16 / sizeof(float);
  next = view + cells(dims);
  return view;
}

// Coarse cell I lies on fine cell 2 I, so an odd size leaves one more cell before the far ghost of
// the coarse grid.
double next_width(double h, double s, int n) { return n % 2 == 1 && n != 1 ? h + s : h; }

}  // namespace

MultigridSolver3D::MultigridSolver3D() = default;
MultigridSolver3D::~MultigridSolver3D() = default;

void MultigridSolver3D::setup(int nx, int ny, int nz, Field<float>& r0, Field<float>& buffer) {
  levels_.clear();
  if (std::min({nx, ny, nz}) < 3) return;

  const std::vector<Vec3i> dims = level_dims({nx, ny, nz});
  std::size_t size = 0;
  for (std::size_t l = 1; l < dims.size(); ++l) size += buffer_size(dims[l]);
  if (buffer.capacity() < size) buffer.resize(static_cast<int>(size), 1, 1);

  levels_.resize(dims.size());
  levels_[0].r = r0.data();
  float* next = buffer.data();
  double s = 1;
  for (std::size_t l = 0; l < dims.size(); ++l, s *= 2) {
    LevelGrid& g = levels_[l];
    if (l > 0)
      for (float** view : {&g.x, &g.b, &g.r}) *view = take_view(next, dims[l]);
    g.nx = dims[l][0];
    g.ny = dims[l][1];
    g.nz = dims[l][2];
    // In the last cell of an axis the second derivative on unequal intervals s and h has the
    // weights 2 / (s (s + h)) and 2 / (h (s + h)). Both are scaled by s^2 like the rest of the
    // operator.
    for (int a = 0; a < 3; ++a) {
      if (l > 0) g.h[a] = next_width(levels_[l - 1].h[a], s / 2, dims[l - 1][a] - 2);
      const double h = g.h[a];
      g.near[a] = 2 * s / (s + h);
      g.far[a] = 2 * s * s / (h * (s + h));
    }
  }
  if (dims.size() > 1 && next > buffer.data() + buffer.capacity())
    LogMessage() << "MG buf too small for " << nx << "," << ny << "," << nz << " (is [" << r0.nx()
                 << "," << r0.ny() << "," << r0.nz() << "] and [" << buffer.nx() << ","
                 << buffer.ny() << "," << buffer.nz() << "])";
}

void MultigridSolver3D::clear() {
  solids_.reset();
  levels_.clear();
}

void MultigridSolver3D::set_solids(const Field<float>& phi) {
  prepare_levels();
  solids_ = std::make_unique<SolidLevels>(levels_, phi);
}

void MultigridSolver3D::clear_solids() {
  solids_.reset();
  for (LevelGrid& level : levels_) {
    level.inverse_weight = nullptr;
    level.near_solid = nullptr;
    for (const float*& open : level.open) open = nullptr;
  }
}

void MultigridSolver3D::prepare_levels() {
  for (LevelGrid& level : levels_) {
    for (std::size_t face = 0; face < bc.size(); ++face) level.closed[face] = bc[face] == 1;
    level.stale_ghosts = plain;
    const int single = !halves(level.nx) + !halves(level.ny) + !halves(level.nz);
    level.first_color = !plain && single == 1;
  }
}

bool MultigridSolver3D::needs_outer_iteration() const {
  return !plain && (solids_ || std::count(bc.begin(), bc.end(), 1) > 0);
}

SolveResult MultigridSolver3D::solve(Field<float>& x, Field<float>& b, int expected_cycles,
                                     int max_cycles, float tolerance, SolverProgress* progress) {
  if (levels_.empty()) throw 0;
  LevelGrid& finest = levels_[0];
  const Vec3i dims{finest.nx, finest.ny, finest.nz};
  if (x.dims() != dims || b.dims() != dims) throw 0;

  const float residual = infnorm(b);
  if (residual <= tolerance) {
    set(x, 0);
    return {residual, 0, SolveEnd::kConverged};
  }
  if (max_cycles <= 0) {
    set(x, 0);
    return {residual, 0, SolveEnd::kMaxCycles};
  }

  finest.x = x.data();
  finest.b = b.data();
  prepare_levels();
  progress_ = progress;
  cycle_ = 0;
  expected_cycles_ = expected_cycles;
  set_boundary_condition(x, bc);
  split_rows(x, finest.r);
  split_rows(b, finest.r);
  const SolveResult result = needs_outer_iteration()
                                 ? combined_cycles(max_cycles, tolerance, residual)
                                 : cycles(max_cycles, tolerance, residual);
  if (result.cycles > 0) {
    merge_rows(x, finest.r);
    set_boundary_condition(x, bc);
  } else {
    set(x, 0);  // stopped within the first cycle
  }
  progress_ = nullptr;
  finest.x = finest.b = nullptr;
  return result;
}

SolveResult MultigridSolver3D::cycles(int max_cycles, float tolerance, float residual) {
  return iterate(max_cycles, tolerance, residual, [&] {
    v_cycle(0, 1, 2, 2);
    return ResidualNorm3D(levels_[0]);
  });
}

SolveResult MultigridSolver3D::combined_cycles(int max_cycles, float tolerance, float residual) {
  OuterIteration outer(levels_[0]);
  // Around solids the coarse levels are only a rough picture of the finer ones. Solving them
  // better, by W-cycles, halves the number of cycles.
  const int gamma = solids_ ? 2 : 1;
  return iterate(max_cycles, tolerance, residual, [&] {
    outer.start_cycle();
    v_cycle(0, gamma, 2, 2);
    return outer.finish_cycle();
  });
}

// `cycle` runs one cycle and returns the residual.
template <class Cycle>
SolveResult MultigridSolver3D::iterate(int max_cycles, float tolerance, float residual,
                                       Cycle cycle) {
  float previous = residual;
  for (int rises = 0; cycle_ < max_cycles;) {
    if (cycle_ >= 1 && residual > previous) {
      LogMessage() << "MS #" << cycle_ << " new = " << residual << " prev = " << previous;
      if (++rises > 2) {
        LogMessage() << "MS: bad convergence, aborting";
        return {residual, cycle_, SolveEnd::kDiverging};
      }
    }
    previous = residual;
    residual = cycle();
    if (abort_requested()) {
      LogMessage() << "Solver aborted!";
      return {residual, cycle_, SolveEnd::kAborted};
    }
    ++cycle_;
    if (residual <= tolerance) return {residual, cycle_, SolveEnd::kConverged};
  }
  return {residual, cycle_, SolveEnd::kMaxCycles};
}

void MultigridSolver3D::v_cycle(std::size_t level, int gamma, int pre, int post) {
  if (abort_requested()) return;
  const LevelGrid& fine = levels_[level];
  if (level + 1 == levels_.size()) {
    RBGS3D(1, fine);
    return;
  }
  const LevelGrid& below = levels_[level + 1];
  RBGS3D(pre, fine);
  Restrict3D(below, fine);
  if (solids_) solids_->make_solvable(below);
  clear_solution(below);
  for (int i = 0; i < gamma; ++i) v_cycle(level + 1, gamma, pre, post);
  Prolongate3D(fine, below);
  RBGS3D(post, fine);
}

// If the estimate was too low, the reported total grows.
bool MultigridSolver3D::abort_requested() const {
  return progress_ && progress_->abort_requested(cycle_, std::max(cycle_ + 1, expected_cycles_));
}

}  // namespace nbx
