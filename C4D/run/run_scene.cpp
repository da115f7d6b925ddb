#include "C4D/run/run_scene.h"

#include "C4D/services/host_conversion.h"
#include "C4D/settings/scene_settings.h"
#include "C4D/sources/source_substeps.h"
#include "C4D/sources/source_tags.h"
#include "util/cuda_use_flags.h"

namespace nbx {

RunScene::RunScene(host::BaseObject& volume, const RunTimes& times, const RunFrontEnd& front_end)
    : volume_(volume),
      times_(times),
      front_end_(front_end),
      emitters_(volume),
      solids_(volume),
      source_tags_(find_source_tags(document())) {}

bool RunScene::evaluate_at(const host::BaseTime& time) {
  document().SetTime(time);
  return document().ExecutePasses(&front_end_, true, true, true);
}

bool RunScene::pre_roll(double voxel_size) {
  const double length = times_.now.length.value();
  const int frames = times_.now.frame() - times_.start.frame();
  for (int f = 0; f < frames; ++f) {
    if (front_end_.TestBreak()) return false;
    const double start = times_.start.time.value() + f * length;
    const int n = source_substeps(volume_, source_tags_, voxel_size, start, start + length);
    for (int i = 0; i < n; ++i) evaluate(document(), start + i * length / n);
  }
  return true;
}

void RunScene::read_settings(Simulation3D& sim, double dt) {
  if (const auto device = front_end_.device()) set_device(cuda_use_flags(), *device);
  read_step_settings(sim.settings, volume_, dt);
}

void RunScene::update_inputs(Simulation3D& sim, double dt) {
  emitters_.update_inputs(sim, times_.now.time.value(), dt);
}

void RunScene::update_solids(Simulation3D& sim, double dt) { solids_.update_solids(sim, dt); }

}  // namespace nbx
