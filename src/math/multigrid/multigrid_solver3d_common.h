// The steps of the multigrid solver on one level, each over all planes and threads. Their results
// have the same bits for any number of threads.
#pragma once

#include "math/field.h"
#include "math/multigrid/multigrid_level.h"

namespace nbx {

/// Sets the six ghost planes of a field with natural rows, in order x-, x+, y-, y+, z-, z+: a
/// closed face takes its inner neighbor plane, an open one 0.
void set_boundary_condition(Field<float>& x, const std::array<int, 6>& bc);

/// Reorders the rows from natural to split (multigrid_level.h), and back. `scratch` holds as many
/// floats as the field.
void split_rows(Field<float>& f, float* scratch);
void merge_rows(Field<float>& f, float* scratch);

/// x = 0
void clear_solution(const LevelGrid& g);

/// Red-black Gauss-Seidel sweeps in place: color 0, where i + j + k is even, then color 1.
void RBGS3D(int sweeps, const LevelGrid& g);

/// The infinity norm of b - A x over the interior.
float ResidualNorm3D(const LevelGrid& g);

/// coarse.b = 2 (b - A x) at the coarse cells, by injection.
void Restrict3D(const LevelGrid& coarse, const LevelGrid& fine);

/// fine.x += the interpolated coarse.x, linear on each axis in turn.
void Prolongate3D(const LevelGrid& fine, const LevelGrid& coarse);

}  // namespace nbx
