#include "simulation/fluid/project.h"

#include <algorithm>
#include <cmath>

#include "math/field_checks.h"
#include "math/field_operators.h"
#include "math/field_pool.h"
#include "simulation/field_planes.h"
#include "simulation/fluid/enclosed_regions.h"
#include "simulation/fluid_tools3d.h"
#include "util/exception.h"

namespace nbx {

namespace {

// The levels of the solver during one projection, in fields of the pool.
class Levels {
 public:
  Levels(MultigridSolver3D& solver, const Vec3i& dims)
      : solver_(solver), r0_(acquire_field(dims)), buffer_(acquire_field()) {
    solver_.setup(dims[0], dims[1], dims[2], *r0_, *buffer_);
  }
  ~Levels() { solver_.clear(); }
  Levels(const Levels&) = delete;
  Levels& operator=(const Levels&) = delete;

 private:
  MultigridSolver3D& solver_;
  FieldHandle r0_, buffer_;
};

void velocity_boundary(const ProjectionFields& f, const Domain& domain) {
  VelocityBoundaryU(*f.U, domain);
  VelocityBoundaryV(*f.V, domain);
  VelocityBoundaryW(*f.W, domain);
}

// Faces next to solids take the solids' velocity. Solids that are left from an earlier substep of
// the frame have none: they rest.
void constrain_to_solids(const ProjectionFields& f) {
  if (f.Us && f.Vs && f.Ws)
    return constrainBoundaryVelocityT(*f.phi, *f.Us, *f.Vs, *f.Ws, *f.U, *f.V, *f.W);
  const FieldHandle u = acquire_field(f.U->dims()), v = acquire_field(f.V->dims()),
                    w = acquire_field(f.W->dims());
  for (const FieldHandle& rest : {u, v, w}) set(*rest, 0);
  constrainBoundaryVelocityT(*f.phi, *u, *v, *w, *f.U, *f.V, *f.W);
}

// -lap p = -div u / dx + source, on a grid of spacing 1
void right_hand_side(Field<float>& rhs, const ProjectionFields& f, double dx) {
  NegDivergence(rhs, *f.U, *f.V, *f.W, f.phi, 1 / dx);
  if (f.source) axpy(rhs, 1, *f.source, rhs);
}

// The solver throws an integer if its levels and the fields don't fit together.
SolveResult solve(MultigridSolver3D& solver, Field<float>& p, Field<float>& rhs,
                  int expected_cycles, int max_cycles, float tolerance, SolverProgress* progress) {
  try {
    return solver.solve(p, rhs, expected_cycles, max_cycles, tolerance, progress);
  } catch (int) {
    throw Exception("the pressure's fields don't fit the solver's levels");
  }
}

// The solve around solids leaves out what expands inside of them.
void clear_in_solid(Field<float>& rhs, const Field<float>& phi) {
#pragma omp parallel for schedule(static) if (rhs.count() > kSmallField)
  for (std::ptrdiff_t c = 0; c < static_cast<std::ptrdiff_t>(rhs.count()); ++c)
    if (!(phi[c] > 0)) rhs[c] = 0;
}

}  // namespace

Projection project(MultigridSolver3D& solver, const ProjectionFields& fields, const Domain& domain,
                   const ProjectionLimits& limits, int expected_cycles, SolverProgress* progress) {
  const ProjectionFields& f = fields;
  const Vec3i dims = check_mac(*f.U, *f.V, *f.W);
  if (std::min({dims[0], dims[1], dims[2]}) < 3) return {};
  if (f.phi) constrain_to_solids(f);

  const FieldHandle rhs = acquire_field(dims), p = acquire_field(dims);
  set(*p, 0);
  solver.bc = domain.closed_faces();
  const Levels levels(solver, dims);
  const double dx = domain.dx;
  const float tolerance = limits.tolerance;
  const EnclosedRegions rooms(dims, f.phi, solver.bc);
  Projection result;

  // The pressure of the fluid alone: faces of solids keep their velocity.
  if (f.phi && limits.solid_iterations > 0) {
    velocity_boundary(f, domain);
    right_hand_side(*rhs, f, dx);
    if (f.source) clear_in_solid(*rhs, *f.phi);
    result.confined = rooms.remove_means(*rhs);
    solver.set_solids(*f.phi);
    const SolveResult around =
        solve(solver, *p, *rhs, expected_cycles, limits.solid_iterations, tolerance, progress);
    solver.clear_solids();
    result.solid_passes = around.cycles;
    if (around.cycles > 0) subtract_pressure_gradient(*f.U, *f.V, *f.W, *p, dx, f.phi);
    // Only volume that appears inside of solids can be left.
    if (around.end == SolveEnd::kConverged && !f.source) {
      result.residual = around.residual;
      return result;
    }
  }

  velocity_boundary(f, domain);
  right_hand_side(*rhs, f, dx);
  const double confined = rooms.remove_means(*rhs);
  if (result.solid_passes == 0) result.confined = confined;
  // The solve below ignores solids: all of the box is one room.
  if (f.phi) EnclosedRegions(dims, nullptr, solver.bc).remove_means(*rhs);
  static_cast<SolveResult&>(result) =
      solve(solver, *p, *rhs, expected_cycles, limits.max_cycles, tolerance, progress);
  if (result.cycles > 0) subtract_pressure_gradient(*f.U, *f.V, *f.W, *p, dx, nullptr);
  if (std::isnan(result.residual)) throw Exception("Floating point error during linear solving");
  return result;
}

}  // namespace nbx
