// A simulation in the domain of a document's volume "v", as a run makes it, without a cache.
#pragma once

#include <functional>

#include "C4D/settings/scene_settings.h"
#include "C4D/sources/emitter_sampler.h"
#include "C4D/sources/solid_sampler.h"
#include "C4D/test_document.h"
#include "math/field_reductions.h"
#include "simulation/simulation3d.h"
#include "support/support.h"

namespace nbx::test {

class SceneRun : private SceneEvaluator {
 public:
  /// Nothing rises by itself. The arguments are those of TestDocument.
  explicit SceneRun(const std::string& objects, const std::string& more = "")
      : document_(objects, more),
        volume_(document_.object("v")),
        emitters_(volume_),
        solids_(volume_) {
    read_run_settings(sim.params, sim.sink, volume_);
    sim.clock.sim_time.length = {1, 25};
    sim.clock.frame_duration = 0.04;
    sim.init_state(*this);
  }

  /// One more frame.
  void frame() { sim.update(*this, time_, nullptr); }

  const Field<float>& density() { return sim.channel_field(kDensity)->read_cpu(); }
  /// The density of a cell, by world coordinates; 0 outside of the simulated box.
  float density_at(const Vec3d& world) {
    const Vec3d at = sim.domain.world_to_grid(world);
    const Vec3i cell(std::lround(at[0]), std::lround(at[1]), std::lround(at[2]));
    const Vec3i i = cell - sim.domain.origin();
    return sim.domain.active_box.contains(cell) ? density()(i[0], i[1], i[2]) : 0.0f;
  }
  std::size_t tags() const { return emitters_.tags().size(); }
  host::BaseObject& object(const std::string& name) { return document_.object(name); }

  Simulation3D sim;
  // Of the last substep.
  IntBox keep_box;
  Solids solids;
  std::function<void(StepSources&)> after_inputs = [](StepSources&) {};
  bool second_half = false;  // the sources are those of a substep from the frame's middle on

 private:
  StepSettings read_settings(const RunView& run, double dt) override {
    StepSettings step = read_step_settings(run, volume_, dt);
    step.params.channel_params[kDensity].buoyancy = 0;
    step.params.channel_params[kTemperature].buoyancy = 0;
    return step;
  }
  void update_inputs(const RunView& run, StepSources& sources, double dt) override {
    StepClock clock = run.clock;
    if (second_half) clock.frame_elapsed = dt = dt / 2;
    emitters_.update_inputs({run.params, clock, run.domain}, sources, time_.time.value(), dt);
    keep_box = sources.keep_box;
    after_inputs(sources);
  }
  Solids update_solids(const RunView& run, double dt) override {
    return solids = solids_.update_solids(run, dt);
  }

  TestDocument document_;
  host::BaseObject& volume_;
  FrameTime time_{{0, 1}, {1, 25}};
  EmitterSampler emitters_;
  SolidSampler solids_;
};

}  // namespace nbx::test
