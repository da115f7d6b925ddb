// Turns the meshes that are solids into what the pressure solve needs of them.
#pragma once

#include <vector>

#include "C4D/sources/source_tags.h"
#include "scene/vcvdt.h"
#include "simulation/simulation3d.h"

namespace nbx {

/// Lives as long as a run, on its thread. The document and its tags must outlive it. The motion of
/// solids comes from their points: each remembers where it was at the end of the last substep.
class SolidSampler {
 public:
  explicit SolidSampler(host::BaseObject& volume);

  /// Sets `sim.solids` for the active box, at the document's time, which must be the end of a
  /// substep of `dt` seconds of the simulation. Without solids nothing is set. At the first call,
  /// and where the number of points has changed, with a log line, the solids count as resting.
  void update_solids(Simulation3D& sim, double dt);

  /// Lets the next motion count from the document's time, for a run that goes on from there.
  void remember_points() { vertex_velocities(meshes(), 0); }

 private:
  std::vector<SourceMesh> meshes() const;
  std::vector<Vec3f> vertex_velocities(const std::vector<SourceMesh>& meshes, double scale);

  std::vector<host::BaseTag*> tags_;  // solids, in the order of the tree
  std::vector<Vec3d> prev_vertices_;  // world coordinates, one running index over all solids
  bool first_ = true;
  VCVDT<float> grid_;  // kept for their memory
  std::vector<std::int32_t> ids_;
};

}  // namespace nbx
