#include "C4D/simulate_on_render.h"

#include <QDir>
#include <exception>

#include "C4D/load_string.h"
#include "C4D/volume_cache.h"
#include "C4D/volume_parameters.h"
#include "C4D/volume_shading_parameters.h"
#include "util/log.h"

namespace nbx {

namespace {

int frame_of(const host::BaseTime& time, const host::FrameRate& rate) {
  return static_cast<int>(time.GetFrame(rate));
}

bool wants_simulation(const HostVolume& volume, const host::BaseRender& render) {
  return !render.IsNetworkClient() && render.GetFirstFrame() != render.GetLastFrame() &&
         volume.object->GetDataInstance().GetBool(OVOLUME_SIMULATE_ON_RENDER);
}

void begin(HostVolume& volume) {
  if (const std::string directory = named_cache(*volume.object); !directory.empty()) {
    QDir().mkpath(QString::fromStdString(directory));
    volume.object->GetDataInstance().SetFilename(OVOLUME_CACHE_NAME, {directory});
  }
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
  const host::FrameRate fps = document.GetFps();
  const int frame = frame_of(now, fps);
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
