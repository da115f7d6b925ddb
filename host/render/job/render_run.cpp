#include "host/render/job/render_run.h"

#include <chrono>
#include <cstdio>
#include <stdexcept>

#include "host/render/color.h"
#include "host/render/sampler.h"
#include "host/render/trace/frame_renderer.h"

namespace host {
namespace {

class Clock {
 public:
  /// Seconds since the last call or the construction.
  double Lap() {
    const auto now = std::chrono::steady_clock::now();
    const double seconds = std::chrono::duration<double>(now - start_).count();
    start_ = now;
    return seconds;
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

std::string Rounded(double value, const char* format) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

std::string PartialPath(const std::string& path) {
  const std::size_t point = path.find_last_of('.');
  return path.substr(0, point) + ".partial" + path.substr(point);
}

}  // namespace

/// Closes everything that was opened in a phase, in reverse order.
class RenderRun::OpenPhase {
 public:
  OpenPhase(RenderPhase phase, RenderSession& session) : phase_(phase), session_(session) {}
  ~OpenPhase() {
    for (auto effect = opened_.rbegin(); effect != opened_.rend(); ++effect) try {
        effect->data->Execute(*effect->node, phase_, false, session_);
      } catch (const std::exception& error) {
        session_.Warning(effect->node->GetName() + ": " + error.what());
      }
  }
  OpenPhase(const OpenPhase&) = delete;
  OpenPhase& operator=(const OpenPhase&) = delete;

  RenderResult Open(const Effect& effect) {
    opened_.push_back(effect);
    return effect.data->Execute(*effect.node, phase_, true, session_);
  }

 private:
  RenderPhase phase_;
  RenderSession& session_;
  std::vector<Effect> opened_;
};

int RenderRun::Run() {
  Clock clock;
  int code = kFailed;
  try {
    code = RunFrames();
  } catch (const std::bad_alloc&) {
    context_.Error("frame " + std::to_string(session_.GetFrame()) + ": out of memory");
  } catch (const std::exception& error) {
    context_.Error("frame " + std::to_string(session_.GetFrame()) + ": " + error.what());
  }
  if (session_.Refused() == kDone) ReportEnd(code, clock.Lap());
  return code;
}

int RenderRun::RunFrames() {
  for (const auto& node : document_.VideoPosts())
    if (auto* data = static_cast<VideoPostData*>(node->GetNodeData()))
      effects_.push_back({node.get(), data});
  OpenPhase sequence(RenderPhase::Sequence, session_);
  for (const Effect& effect : effects_)
    if (const int code = Opened(sequence.Open(effect), *effect.node); code != kDone) return code;
  for (const std::int32_t frame : job_.frames) {
    if (context_.Interrupts() > 0) return kInterrupted;
    if (const int code = RunFrame(frame); code != kDone) return code;
  }
  return kDone;
}

int RenderRun::RunFrame(std::int32_t frame) {
  Clock clock;
  Times times;
  document_.SetTime(BaseTime::FromFrame(frame, document_.GetFps()));
  document_.ExecutePasses(nullptr, true, true, true);
  RenderScene scene(document_, job_.quality, job_.width, job_.height);
  session_.SetFrame(frame, scene);
  times.surfaces = clock.Lap();

  OpenPhase phase(RenderPhase::Frame, session_);
  if (const int code = OpenFrame(scene, phase); code != kDone) return code;
  bool skip = false;
  if (const int code = HandleMissing(skip); code != kDone || skip) return code;
  if (scene.bounces > 0) {
    const SceneBounds bounds = PluginBounds(document_);
    scene.glow = FindGlow(scene, bounds.low, bounds.high);
  }
  times.effects = clock.Lap();

  session_.SetStatusText("rendering");
  FrameTask task{job_.width, job_.height, job_.window, job_.quality.samples, job_.threads};
  task.stop = [this] { return session_.TestBreak(); };
  task.progress = [this](double share) { session_.SetProgress(share); };
  RayCounts counts;
  const Picture picture = RenderFrame(scene, task, counts);
  times.rays = clock.Lap();
  if (counts.broken > 0)
    context_.Warning("frame " + std::to_string(frame) + ": " + std::to_string(counts.broken) +
                     " rays got no finite color from a post effect; they are left empty");
  rays_ += counts.rays + counts.shadow_rays;
  ray_seconds_ += times.rays;
  return Deliver(picture, scene, times, counts);
}

int RenderRun::OpenFrame(RenderScene& scene, OpenPhase& phase) {
  for (const Effect& effect : effects_) {
    scene.effects.push_back(effect.data);  // queries during the opening already see it
    if (const int code = Opened(phase.Open(effect), *effect.node); code != kDone) return code;
  }
  return kDone;
}

int RenderRun::Opened(RenderResult result, const BaseVideoPost& node) {
  if (session_.Refused() != kDone) return session_.Refused();
  if (result == RenderResult::Ok) return session_.TestBreak() ? kInterrupted : kDone;
  if (result == RenderResult::UserBreak && session_.TestBreak()) return kInterrupted;
  context_.Error("frame " + std::to_string(session_.GetFrame()) + ": " + node.GetName() +
                 (result == RenderResult::OutOfMemory ? ": out of memory" : " ended the render"));
  return kFailed;
}

int RenderRun::HandleMissing(bool& skip) {
  const std::string frame = "frame " + std::to_string(session_.GetFrame()) + ": ";
  const bool is_error = job_.missing == MissingFrames::Error;
  for (const std::string& what : session_.Missing())
    is_error ? context_.Error(frame + what) : context_.Warning(frame + what);
  if (session_.Missing().empty()) return kDone;
  if (is_error) {
    context_.Note(
        "--missing skip skips such frames, --missing empty renders them without the volume");
    return kFailed;
  }
  skip = job_.missing == MissingFrames::Skip;
  return kDone;
}

int RenderRun::Deliver(const Picture& picture, const RenderScene& scene, Times times,
                       const RayCounts& counts) {
  Clock clock;
  const std::string whole = job_.PathOf(session_.GetFrame());
  const std::string path = picture.complete ? whole : PartialPath(whole);
  const PictureMetadata metadata{
      session_.GetFrame(),  document_.GetFps(),       software_,
      scene.camera.Place(), scene.camera.HalfWidth(), scene.camera.HalfHeight()};
  WritePicture(picture, metadata, job_.depth, job_.exposure, path);
  times.write = clock.Lap();
  ReportFrame(picture, path, times, counts);
  if (!picture.complete) return kInterrupted;
  ++pictures_;
  return kDone;
}

void RenderRun::ReportFrame(const Picture& picture, const std::string& path, const Times& times,
                            const RayCounts& counts) {
  const std::int64_t samples = picture.pixels.size() * job_.quality.samples;
  if (picture.complete) samples_ += samples;
  const double seconds = times.surfaces + times.effects + times.rays + times.write;
  context_.Progress("frame " + std::to_string(session_.GetFrame()) + ": " + path + ", " +
                        Rounded(seconds, "%.1f s"),
                    true);
  context_.Result(path);
  context_.Event("picture", {{"frame", std::int64_t{session_.GetFrame()}},
                             {"path", path},
                             {"complete", picture.complete},
                             {"width", std::int64_t{picture.window.Width()}},
                             {"height", std::int64_t{picture.window.Height()}},
                             {"samples", samples},
                             {"rays", counts.rays},
                             {"shadow_rays", counts.shadow_rays},
                             {"seconds", seconds},
                             {"seconds_surfaces", times.surfaces},
                             {"seconds_effects", times.effects},
                             {"seconds_rays", times.rays},
                             {"seconds_write", times.write}});
}

void RenderRun::ReportEnd(int code, double seconds) {
  const double per_second = ray_seconds_ > 0 ? 1 / ray_seconds_ : 0;
  const double each = pictures_ > 0 ? seconds / pictures_ : 0;
  const double rays = rays_ * per_second;
  const double samples = samples_ * per_second;
  const std::string outcome = code == kDone          ? "done"
                              : code == kInterrupted ? "interrupted"
                                                     : "failed";
  context_.Note(outcome + ": " + std::to_string(pictures_) + " pictures, " +
                Rounded(each, "%.2f s each, ") + Rounded(rays * 1e-6, "%.2f million rays and ") +
                Rounded(samples * 1e-6, "%.2f million samples per second"));
  context_.Event("end", {{"outcome", outcome},
                         {"pictures", pictures_},
                         {"seconds", seconds},
                         {"seconds_per_picture", each},
                         {"rays_per_second", rays},
                         {"samples_per_second", samples}});
}

}  // namespace host
