#include "C4D/settings/volume_grid.h"

#include <cmath>
#include <sstream>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "math/sparse_field.h"

namespace nbx {

namespace {

constexpr double kMostCells = SparseField<float, 3>::kMaxCoordinate + 1.0;

bool finite(const Affine3d& m) {
  bool all = true;
  for (int a = 0; a < 3; ++a) {
    all = all && std::isfinite(m.translation[a]);
    for (const Vec3d& row : m.rows) all = all && std::isfinite(row[a]);
  }
  return all;
}

}  // namespace

// With v the voxel's edge and c the domain's center in the object's space, z negated:
//
//     lo = floor((c - size/2) / v),  hi = ceil((c + size/2) / v),  cells = hi - lo
//     cell = F M^-1 p / v - lo - 1/2
//
// where M is the object's matrix and F the flip of z. So the center of cell i has coordinate i.
// Cell x then becomes the cells from f x on, whose centers are at f (x + 1/2) - 1/2 and so on.
VolumeGrid volume_grid(const host::BaseObject& volume, double voxel_size, int factor) {
  const double v = std::max(voxel_size, 2.220446049250313e-16);
  const Vec3d center = to_flipped_vector(volume.GetMp());
  const Vec3d size = to_vector(ParameterReader(volume)(OVOLUME.SIZE));

  VolumeGrid grid;
  Affine3d to_cells;
  for (int a = 0; a < 3; ++a) {
    const double lo = std::floor((center[a] - size[a] / 2) / v);
    const double hi = std::ceil((center[a] + size[a] / 2) / v);
    grid.cells[a] = std::max(hi - lo, 2.0) * factor;
    to_cells.rows[a][a] = (a == 2 ? -1 : 1) * factor / v;
    to_cells.translation[a] = -lo * factor - 0.5;
  }
  grid.world_to_grid = to_cells * inverse(to_affine(volume.GetMg()));
  return grid;
}

VolumeGrid run_grid(const host::BaseObject& volume, const SolverParams& params) {
  if (!params.upres) return volume_grid(volume, params.voxel_size);
  return volume_grid(volume, ParameterReader(volume)(OVOLUME.VOXEL_SIZE), params.upres_factor);
}

Vec3i VolumeGrid::dims() const {
  Vec3i n;
  for (int a = 0; a < 3; ++a) n[a] = static_cast<int>(std::min(cells[a], kMostCells));
  return n;
}

std::string what_is_wrong(const VolumeGrid& grid) {
  std::ostringstream text;
  for (int a = 0; a < 3; ++a)
    if (!(grid.cells[a] <= kMostCells)) {
      text << "the domain has " << grid.cells[a] << " voxels along "
           << "xyz"[a] << ", at most " << static_cast<int>(kMostCells)
           << " are possible: make voxel_size larger";
      return text.str();
    }
  const auto& rows = grid.world_to_grid.rows;
  if (!finite(grid.world_to_grid) || dot(rows[0], cross(rows[1], rows[2])) == 0)
    return "the object's scale is zero or too large";
  return {};
}

}  // namespace nbx
