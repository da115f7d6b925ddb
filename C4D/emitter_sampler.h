// Turns the emitter tags of a document into the sources of a substep.
#pragma once

#include <vector>

#include "host/interface/scene.h"
#include "scene/cell_center_voxelizer.h"
#include "simulation/simulation3d.h"

namespace nbx {

/// Lives as long as a run, on its thread. The document and its tags must outlive it.
class EmitterSampler {
 public:
  /// Finds the enabled tags.
  explicit EmitterSampler(host::BaseObject& volume);

  /// Hands every tag's source to `sim`, once for each voxel that the fastest point of any source
  /// moves in this substep (or as often as the volume object says), so that a fast source leaves no
  /// gaps. `frame_start` is the document time of the frame in seconds. Leaves the document at the
  /// end of the substep.
  void update_inputs(Simulation3D& sim, double frame_start, double dt);

  std::size_t tags() const { return tags_.size(); }

 private:
  int source_substeps(const SimSettings& settings, double start, double duration);
  void collect_points(std::vector<Vec3d>& points, double voxel_size);
  void sample(Simulation3D& sim, host::BaseTag& tag, double frames);

  host::BaseObject& volume_;
  std::vector<host::BaseTag*> tags_;  // in the order of the tree

  // Kept for their memory.
  SparseField<float, 3> weights_;
  std::vector<VoxelizationTriangle> triangles_;
  std::vector<Vec3d> start_points_, end_points_;
};

/// The meshes among `object` and what lies under it, without what is switched off.
std::vector<host::PolygonObject*> gather_polygon_objects(host::BaseObject& object);

/// Adds the mesh's triangles in the cells of `world_to_cells`. The flip of z turns the corners'
/// order round, so a polygon a, b, c, d gives (a, c, b) and, if c != d, (a, d, c).
void add_triangles(std::vector<VoxelizationTriangle>& triangles, const host::PolygonObject& mesh,
                   const Affine3d& world_to_cells);

}  // namespace nbx
