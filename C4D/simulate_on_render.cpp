#include "C4D/simulate_on_render.h"

#include <QDir>
#include <cmath>
#include <exception>

#include "C4D/load_string.h"
#include "C4D/volume_cache.h"
#include "C4D/volume_shading_parameters.h"
#include "util/log.h"

namespace nbx {

namespace {

int frame_of(const host::BaseTime& time, int fps) {
  return static_cast<int>(std::trunc(time.Get() * fps));
}

bool wants_simulation(const HostVolume& volume, const host::BaseRender& render) {
  return !render.IsNetworkClient() && render.GetFirstFrame() != render.GetLastFrame() &&
         volume.object->GetDataInstance().GetBool(OVOLUME_SIMULATE_ON_RENDER);
}

// The cache that the user named is made under that name; only an unnamed one gets a new name.
void make_named_cache(const host::BaseObject& volume) {
  const CacheDirData data = cache_dir_data(volume);
  if (!data.base.empty() && !data.name.empty())
    QDir().mkpath(QString::fromStdString(data.base + "/" + data.name));
}

void begin(HostVolume& volume) {
  make_named_cache(*volume.object);
  autosave(*volume.object);
  volume.simulation = std::make_unique<RenderSimulation>();
  if (volume.simulation->run.prepare_sim(volume.object, &volume.simulation->thread)) return;
  LogMessage() << "Failed to prepare sim";
  end_simulation(volume);
}

bool step_to(HostVolume& volume, int frame, const host::BaseRender& render) {
  SimulationThread& run = volume.simulation->run;
  while (run.time().frame() < frame) {
    if (render.TestBreak()) return false;
    if (!run.step()) {
      LogMessage() << "Error while simulating frame " << run.time().frame();
      return false;
    }
  }
  return true;
}

}  // namespace

void simulate_up_to_frame(HostVolume& volume, host::BaseRender& render) {
  if (!wants_simulation(volume, render)) return;
  host::BaseDocument& document = volume.object->GetDocument();
  const host::BaseTime now = document.GetTime();
  const int fps = document.GetFps(), frame = frame_of(now, fps);
  const TimeRange range = time_range(*volume.object);
  if (frame < frame_of(range.start, fps) || frame > frame_of(range.end, fps)) return;
  try {
    if (!volume.simulation) begin(volume);
    if (volume.simulation && volume.simulation->run.time().frame() < frame) {
      render.SetStatusText(load_string(10008));
      if (!step_to(volume, frame, render)) end_simulation(volume);
    }
  } catch (const std::exception& error) {
    LogMessage() << "Error while simulating frame " << frame << ": " << error.what();
    end_simulation(volume);
  }
  document.SetTime(now);
  document.ExecutePasses(nullptr, true, true, true);
}

void end_simulation(HostVolume& volume) {
  if (!volume.simulation) return;
  volume.simulation->run.cleanup();
  volume.simulation.reset();
}

}  // namespace nbx
