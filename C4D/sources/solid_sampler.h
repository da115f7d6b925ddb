// Turns the meshes that are solids into fields of distance and velocity.
#pragma once

#include <vector>

#include "C4D/sources/source_tags.h"
#include "scene/vcvdt.h"
#include "simulation/scene_evaluator.h"

namespace nbx {

/// Lives as long as a run, on its thread. The document and its tags must outlive it. The velocity
/// of a solid comes from its points, whose places at the end of the last substep are kept.
class SolidSampler {
 public:
  explicit SolidSampler(host::BaseObject& volume);

  /// The solids in the active box at the document's time, which must be the end of a substep of
  /// `dt` seconds of simulation time. Solids rest at the first call, and, with a log line, when the
  /// number of points has changed.
  Solids update_solids(const RunView& run, double dt);

  /// Measures the next motion from the document's time, for a run that continues from there.
  void remember_points() { vertex_velocities(meshes(), 0); }

 private:
  std::vector<SourceMesh> meshes() const;
  std::vector<Vec3f> vertex_velocities(const std::vector<SourceMesh>& meshes, double scale);

  std::vector<host::BaseTag*> tags_;  // solids, in the order of the tree
  std::vector<Vec3d> prev_vertices_;  // world coordinates, one running index over all solids
  bool first_ = true;
  VCVDT<float> grid_;  // both kept to reuse their memory
  std::vector<std::int32_t> ids_;
};

}  // namespace nbx
