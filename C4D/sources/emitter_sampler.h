// Turns the emitter tags of a document into the sources of a substep.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "host/interface/scene.h"
#include "simulation/scene_evaluator.h"

namespace nbx {

struct MeshWeights;

/// Lives as long as a run, on its thread. The document and its tags must outlive it.
class EmitterSampler {
 public:
  /// Finds the enabled tags.
  explicit EmitterSampler(host::BaseObject& volume);
  ~EmitterSampler();

  /// Adds the source of every tag, once for each voxel that the fastest point of any source moves
  /// in this substep (or as often as the volume object says), so that a fast source leaves no gaps.
  /// Adds the boxes of solids to `sources.keep_box`. `frame_start` is the document time of the
  /// frame in seconds. Leaves the document at the end of the substep. Throws what the host's
  /// textures throw.
  void update_inputs(const RunView& run, StepSources& sources, double frame_start, double dt);

  const std::vector<host::BaseTag*>& tags() const { return tags_; }

 private:
  void sample(const RunView& run, StepSources& sources, host::BaseTag& tag, double frames);
  void add_meshes(const RunView& run, StepSources& sources, const host::BaseTag& tag,
                  const SimulationObjectParameters& source, MeshWeights& held);

  host::BaseObject& volume_;
  std::vector<host::BaseTag*> tags_;  // in the order of the tree
  std::map<const host::BaseTag*, std::unique_ptr<MeshWeights>> weights_;
};

}  // namespace nbx
