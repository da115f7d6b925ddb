#include "C4D/rendering/simulate_on_render.h"

#include <omp.h>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/rendering/host_volume.h"
#include "C4D/run/run_checks.h"
#include "C4D/run/run_failure.h"
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

std::string subject(const HostVolume& volume) {
  return "volume \"" + volume.object->GetName() + "\": ";
}

bool wants_simulation(const HostVolume& volume, const host::BaseRender& render) {
  const FrameSpan span = frames_of(*volume.object);
  return !render.IsNetworkClient() && render.GetFirstFrame() != render.GetLastFrame() &&
         ParameterReader(*volume.object)(OVOLUME.SIMULATE_ON_RENDER) &&
         render.GetFirstFrame() <= span.last && span.first <= render.GetLastFrame();
}

bool refuse(const HostVolume& volume, host::BaseRender& render, host::Refusal kind,
            const std::string& why) {
  render.Refuse(kind, subject(volume) + why);
  return false;
}

/// Where the earlier run of a cache is to stay or to go, as the user says.
bool settle_earlier_run(const HostVolume& volume, host::BaseRender& render) {
  if (!must_ask_about_cache(*volume.object)) return true;
  const host::OldFiles answer = render.AskAboutOldFiles();
  if (answer == host::OldFiles::Unanswered)
    return refuse(volume, render, host::Refusal::NotAllowed,
                  texts::kCacheHoldsRun.title +
                      ": give --overwrite to simulate over it, --new-cache to leave it alone, or "
                      "--set " +
                      volume.object->GetName() + ".simulate_on_render=false to render its frames");
  if (answer == host::OldFiles::MakeNew && !move_to_new_cache(*volume.object))
    return refuse(volume, render, host::Refusal::NotAllowed, texts::kNoCacheFolder.text);
  return true;
}

bool admit(HostVolume& volume, host::BaseRender& render) {
  if (!wants_simulation(volume, render)) return true;
  if (const std::string lock = what_locks(*volume.object); !lock.empty()) {
    render.Warning(subject(volume) + texts::kCacheLocked.title + " (" + lock +
                   "): it isn't simulated, and the render shows the frames of the cache");
    return true;
  }
  if (const std::string shared = what_shares_cache(*volume.object); !shared.empty())
    return refuse(volume, render, host::Refusal::BadScene, shared);
  return volume.simulates = settle_earlier_run(volume, render);
}

/// What went wrong with the run, whose last frames are saved here; empty if nothing did.
std::string end(HostVolume& volume) {
  std::string failure;
  try {
    volume.simulation->run.cleanup();
    failure = volume.simulation->run.failure();
  } catch (...) {
    failure = run_failure();
  }
  volume.simulation.reset();
  return failure;
}

void give_up(HostVolume& volume, host::BaseRender& render, const std::string& what,
             const std::string& why) {
  LogMessage() << what << (why.empty() ? "" : ": ") << why;
  render.Warning(subject(volume) + what + (why.empty() ? "" : ": " + why) +
                 "; the render goes on with the frames of the cache");
  volume.simulates = false;
  end(volume);
}

/// False if there is no run.
bool begin(HostVolume& volume, host::BaseRender& render) {
  omp_set_num_threads(render.GetThreadCount());
  autosave(*volume.object);
  volume.simulation = std::make_unique<RenderSimulation>(render);
  SimulationThread& run = volume.simulation->run;
  std::string failure;
  try {
    if (run.prepare_sim(volume.object, &volume.simulation->thread)) {
      render.Note(subject(volume) + "simulated into " + find_cache(*volume.object));
      return true;
    }
    failure = run.failure();
  } catch (...) {
    failure = run_failure();
  }
  if (!render.TestBreak()) give_up(volume, render, "Failed to prepare sim", failure);
  return false;
}

void step_to(HostVolume& volume, std::int64_t frame, host::BaseRender& render) {
  SimulationThread& run = volume.simulation->run;
  const std::int64_t first = run.time().frame();
  if (first < frame) render.SetStatusText(texts::kSimulating);
  std::string failure;
  while (run.time().frame() < frame && !render.TestBreak()) {
    const std::int64_t last = run.time().frame();
    render.SetProgress(static_cast<double>(last - first) / static_cast<double>(frame - first));
    bool whole = false;
    try {
      whole = run.step();
    } catch (...) {
      failure = run_failure();
    }
    if (whole || render.TestBreak()) continue;
    give_up(volume, render, "Error while simulating frame " + std::to_string(last + 1), failure);
    return;
  }
}

}  // namespace

bool admit_simulations(VolumeRenderer& renderer, host::BaseRender& render) {
  for (const auto& volume : renderer.volumes)
    if (!admit(host_volume(*volume), render)) return false;
  return true;
}

bool simulate_up_to_frame(VolumeRenderer& renderer, host::BaseRender& render) {
  host::BaseDocument& document = render.GetDocument();
  const host::BaseTime now = document.GetTime();
  const std::int64_t frame = now.GetFrame(document.GetFps());
  bool moved = false;  // a run has taken the document to another time
  for (const auto& each : renderer.volumes) {
    HostVolume& volume = host_volume(*each);
    if (!volume.simulates || !frames_of(*volume.object).contains(frame)) continue;
    moved = true;
    if (volume.simulation || begin(volume, render)) step_to(volume, frame, render);
    if (render.TestBreak()) return false;
  }
  if (!moved) return true;
  document.SetTime(now);
  document.ExecutePasses(nullptr, true, true, true);
  return true;
}

void end_simulations(VolumeRenderer& renderer, host::BaseRender& render) {
  for (const auto& each : renderer.volumes) {
    HostVolume& volume = host_volume(*each);
    if (!volume.simulation) continue;
    const std::string failure = end(volume);
    if (!failure.empty()) render.Warning(subject(volume) + "the run failed: " + failure);
  }
}

}  // namespace nbx
