// Operators between sparse fields and dense grids. Work is split by block, so results have the same
// bits for any number of threads. `offset` is the domain voxel of the dense field's cell (0, 0, 0).
#pragma once

#include "math/mfield.h"
#include "math/sparse_field.h"

namespace nbx {

/// The smallest box of voxels with |value| > threshold.
IntBox min_bbox(const SparseField<float, 3>& field, float threshold);

/// dense += a * sparse, where the two overlap.
void asxpy(const Vec3i& offset, Field<float>& dense, float a, const SparseField<float, 3>& sparse);
void m_asxpy(const Vec3i& offset, MField& dense, float a, const SparseField<float, 3>& sparse);

/// z += a * x, sparse into sparse.
void sparse_axpy(SparseField<float, 3>& z, float a, const SparseField<float, 3>& x);

/// Raises the pending values z so that y + z is at least a * x, and never lowers them:
/// z += max(a x - y - z, 0), with y the dense field, 0 outside of it.
void sparse_raise(SparseField<float, 3>& z, float a, const SparseField<float, 3>& x,
                  const Vec3i& offset, const Field<float>& y);

}  // namespace nbx
