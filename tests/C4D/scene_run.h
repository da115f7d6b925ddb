// A simulation in the domain of a document's volume "v", as a run makes it, without a cache.
#pragma once

#include <functional>

#include "C4D/settings/scene_settings.h"
#include "C4D/sources/emitter_sampler.h"
#include "C4D/sources/solid_sampler.h"
#include "C4D/test_document.h"
#include "math/field_reductions.h"
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
    read_run_settings(sim.settings, volume_);
    sim.settings.sim_time.length = {1, 25};
    sim.settings.frame_duration = 0.04;
    sim.init_state(*this);
  }

  /// One more frame.
  void frame() { sim.update(*this, time_, nullptr); }

  const Field<float>& density() { return sim.channel_field(kDensity)->read_cpu(); }
  /// The density of a cell, by world coordinates; 0 outside of the simulated box.
  float density_at(const Vec3d& world) {
    const Vec3d at = sim.settings.world_to_grid(world);
    const IntBox& box = sim.settings.active_box;
    const Vec3i cell(std::lround(at[0]), std::lround(at[1]), std::lround(at[2]));
    const Vec3i i = cell - box.lo + Vec3i(1, 1, 1);
    return box.contains(cell) ? density()(i[0], i[1], i[2]) : 0.0f;
  }
  std::size_t tags() const { return emitters_.tags(); }
  host::BaseObject& object(const std::string& name) { return document_.object(name); }

  Simulation3D sim;
  // As the sources of the last substep left them.
  IntBox keep_box;
  Solids solids;
  std::function<void()> after_inputs;
  bool second_half = false;  // the sources are those of a substep from the frame's middle on

 private:
  void read_settings(Simulation3D&, double dt) override {
    read_step_settings(sim.settings, volume_, dt);
    sim.settings.channel_params[kDensity].buoyancy = 0;
    sim.settings.channel_params[kTemperature].buoyancy = 0;
  }
  void update_inputs(Simulation3D&, double dt) override {
    if (second_half) sim.settings.frame_elapsed = dt = dt / 2;
    emitters_.update_inputs(sim, time_.time.value(), dt);
    sim.settings.frame_elapsed = 0;
    keep_box = sim.keep_box;
    if (after_inputs) after_inputs();
  }
  void update_solids(Simulation3D&, double dt) override {
    solids_.update_solids(sim, dt);
    solids = sim.solids;
  }

  TestDocument document_;
  host::BaseObject& volume_;
  FrameTime time_{{0, 1}, {1, 25}};
  EmitterSampler emitters_;
  SolidSampler solids_;
};

}  // namespace nbx::test
