#include "C4D/sources/source_substeps.h"

#include <cmath>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_grid.h"
#include "C4D/sources/source_tags.h"

namespace nbx {

namespace {

// A limit for sources that jump across the scene, as at a cut.
constexpr double kMostSourceSubsteps = 1024;

/// All points of all sources at a time, in cells.
std::vector<Vec3d> points_at(host::BaseObject& volume, const std::vector<host::BaseTag*>& tags,
                             double voxel_size, double seconds) {
  evaluate(volume.GetDocument(), seconds);
  const Affine3d world_to_cells = volume_grid(volume, voxel_size).world_to_grid;
  std::vector<Vec3d> points;
  for (const host::BaseTag* tag : tags)
    for (const SourceMesh& source : source_meshes(*tag)) {
      const Affine3d to_cells = world_to_cells * to_affine(source.mesh->GetMg());
      const host::Vector* p = source.mesh->GetPointR();
      for (std::int32_t i = 0; i < source.mesh->GetPointCount(); ++i)
        points.push_back(to_cells(to_vector(p[i])));
    }
  return points;
}

}  // namespace

int source_substeps(host::BaseObject& volume, const std::vector<host::BaseTag*>& tags,
                    double voxel_size, double start, double end) {
  const std::int32_t wanted = ParameterReader(volume)(OVOLUME.SOURCE_SUBSTEPS);
  if (wanted > 0) return wanted;
  if (tags.empty() || end <= start) return 1;
  const std::vector<Vec3d> before = points_at(volume, tags, voxel_size, start);
  const std::vector<Vec3d> after = points_at(volume, tags, voxel_size, end);
  if (before.size() != after.size()) return 1;  // there is no telling which point is which

  double farthest = 0;  // squared
  for (std::size_t i = 0; i < before.size(); ++i) {
    const Vec3d moved = after[i] - before[i];
    farthest = std::max(farthest, dot(moved, moved));
  }
  return static_cast<int>(std::clamp(std::ceil(std::sqrt(farthest)), 1.0, kMostSourceSubsteps));
}

}  // namespace nbx
