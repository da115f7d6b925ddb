#include "C4D/run/run_scene.h"

#include "C4D/services/host_conversion.h"
#include "C4D/settings/scene_settings.h"
#include "C4D/sources/source_substeps.h"
#include "util/cuda_use_flags.h"

namespace nbx {

RunScene::RunScene(host::BaseObject& volume, const RunTimes& times, const RunFrontEnd& front_end)
    : volume_(volume), times_(times), front_end_(front_end), emitters_(volume), solids_(volume) {}

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
    const int n = source_substeps(volume_, emitters_.tags(), voxel_size, start, start + length);
    for (int i = 0; i < n; ++i) evaluate(document(), start + i * length / n);
  }
  return true;
}

StepSettings RunScene::read_settings(const RunView& run, double dt) {
  if (const auto device = front_end_.device(); device && !run.params.upres)
    set_device(cuda_use_flags(), *device);
  return read_step_settings(run, volume_, dt);
}

void RunScene::update_inputs(const RunView& run, StepSources& sources, double dt) {
  emitters_.update_inputs(run, sources, times_.now.time.value(), dt);
}

Solids RunScene::update_solids(const RunView& run, double dt) {
  return solids_.update_solids(run, dt);
}

}  // namespace nbx
