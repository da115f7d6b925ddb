#include "C4D/rendering/simulate_on_render.h"

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/run_checks.h"
#include "C4D/run/run_failure.h"
#include "C4D/services/host_conversion.h"
#include "C4D/services/texts.h"
#include "C4D/settings/volume_cache.h"
#include "util/log.h"

namespace nbx {

namespace {

/// Document frames of the volume's range.
struct FrameSpan {
  std::int64_t first, last;
  bool contains(std::int64_t frame) const { return first <= frame && frame <= last; }
};

FrameSpan frames_of(const host::BaseObject& volume) {
  const auto fps = volume.GetDocument().GetFps();
  const TimeRange range = time_range(volume);
  return {range.start.GetFrame(fps), range.end.GetFrame(fps)};
}

bool wants_simulation(const HostVolume& volume, const host::BaseRender& render) {
  const FrameSpan span = frames_of(*volume.object);
  return !render.IsNetworkClient() && render.GetFirstFrame() != render.GetLastFrame() &&
         ParameterReader(*volume.object)(OVOLUME.SIMULATE_ON_RENDER) &&
         render.GetFirstFrame() <= span.last && span.first <= render.GetLastFrame();
}

bool admit(HostVolume& volume, host::BaseRender& render) {
  if (!wants_simulation(volume, render)) return true;
  host::BaseObject& object = *volume.object;
  if (const Outcome unlocked = check_unlocked(object); !unlocked) {
    render.Warning(subject(object) + texts::kCacheLocked.title + " (" + unlocked.reason() +
                   "): it isn't simulated, and the render shows the frames of the cache");
    return true;
  }
  if (const Outcome own = check_own_cache(object); !own) {
    render.Refuse(host::Refusal::BadScene, subject(object) + own.reason());
    return false;
  }
  RenderFrontEnd front_end(object, render);
  return volume.simulates = !must_ask_about_cache(object) || make_room(object, front_end);
}

/// Saves the last frames of the run, and drops it.
Outcome end(HostVolume& volume) {
  const Outcome finished = outcome_of([&] { return volume.simulation->run.finish(); });
  volume.simulation.reset();
  return finished;
}

void give_up(HostVolume& volume, host::BaseRender& render, const std::string& what,
             const Outcome& why) {
  const std::string failure = what + (why ? "" : ": " + why.reason());
  LogMessage() << failure;
  render.Warning(subject(*volume.object) + failure +
                 "; the render continues with the frames of the cache");
  volume.simulates = false;
  static_cast<void>(end(volume));  // the first failure has been reported
}

/// False if there is no run.
bool begin(HostVolume& volume, host::BaseRender& render) {
  autosave(*volume.object);
  volume.simulation = std::make_unique<RenderSimulation>(*volume.object, render);
  const Outcome prepared = outcome_of([&] { return volume.simulation->run.prepare(); });
  if (prepared)
    render.Note(subject(*volume.object) + "simulated into " + find_cache(*volume.object));
  else if (!render.TestBreak())
    give_up(volume, render, "Failed to prepare sim", prepared);
  return static_cast<bool>(prepared);
}

void step_to(HostVolume& volume, std::int64_t frame, host::BaseRender& render) {
  SimulationRun& run = volume.simulation->run;
  const int first = run.time().frame();
  if (first < frame) render.SetStatusText(texts::kSimulating);
  while (run.time().frame() < frame && !render.TestBreak()) {
    const int last = run.time().frame();
    render.SetProgress(static_cast<double>(last - first) / (frame - first));
    bool whole = false;
    const Outcome stepped = outcome_of([&] {
      whole = run.step();
      return Outcome::success();
    });
    if (whole || render.TestBreak()) continue;
    give_up(volume, render, "Error while simulating frame " + std::to_string(last + 1), stepped);
    return;
  }
}

}  // namespace

bool admit_simulations(std::span<HostVolume> volumes, host::BaseRender& render) {
  for (HostVolume& volume : volumes)
    if (!admit(volume, render)) return false;
  return true;
}

bool simulate_up_to_frame(std::span<HostVolume> volumes, host::BaseRender& render) {
  host::BaseDocument& document = render.GetDocument();
  const host::BaseTime now = document.GetTime();
  const std::int64_t frame = now.GetFrame(document.GetFps());
  bool moved = false;  // a run has taken the document to another time
  for (HostVolume& volume : volumes) {
    if (!volume.simulates || !frames_of(*volume.object).contains(frame)) continue;
    moved = true;
    if (volume.simulation || begin(volume, render)) step_to(volume, frame, render);
    if (render.TestBreak()) return false;
  }
  if (moved) evaluate(document, now);
  return true;
}

void end_simulations(std::span<HostVolume> volumes, host::BaseRender& render) {
  for (HostVolume& volume : volumes) {
    if (!volume.simulation) continue;
    if (const Outcome ended = end(volume); !ended)
      render.Warning(subject(*volume.object) + "the run failed: " + ended.reason());
  }
}

}  // namespace nbx
