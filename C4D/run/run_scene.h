// The scene of a run: the volume object, its document, and the emitters and solids that the
// simulation takes from it.
#pragma once

#include "C4D/run/run_front_end.h"
#include "C4D/run/run_times.h"
#include "C4D/sources/emitter_sampler.h"
#include "C4D/sources/solid_sampler.h"
#include "C4D/sources/source_tags.h"

namespace nbx {

/// Lives as long as the run, which owns the document in that time: nobody else may evaluate it.
class RunScene final : public SceneEvaluator {
 public:
  /// Finds the enabled emitter tags. All arguments must outlive the scene.
  RunScene(host::BaseObject& volume, const RunTimes& times, const RunFrontEnd& front_end);

  host::BaseObject& volume() const { return volume_; }
  host::BaseDocument& document() const { return volume_.GetDocument(); }
  bool has_sources() const { return !emitters_.tags().empty(); }
  bool has_solids() const { return nbx::has_solids(emitters_.tags()); }

  /// Brings the document to a time. False, with the scene half evaluated, if the front end wants
  /// the run to stop now.
  bool evaluate_at(const host::BaseTime& time);
  /// Steps the document from the start of the range to `times.now` as a run would, so that
  /// particles are where they would be. False if the front end wants the run to stop now.
  bool pre_roll(double voxel_size);
  /// Lets the next motion of solids count from the document's time.
  void remember_solids() { solids_.remember_points(); }

  StepSettings read_settings(const RunView& run, double dt) override;
  void update_inputs(const RunView& run, StepSources& sources, double dt) override;
  Solids update_solids(const RunView& run, double dt) override;

 private:
  host::BaseObject& volume_;
  const RunTimes& times_;
  const RunFrontEnd& front_end_;
  EmitterSampler emitters_;
  SolidSampler solids_;
};

}  // namespace nbx
