// Renders a sequence from its first frame to its last.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/render/job/render_session.h"
#include "host/scene/document.h"

namespace host {

/// Renders the frames of a job and writes their pictures, with the document's post effects.
class RenderRun {
 public:
  /// All must outlive the run. `software` is stored in the pictures: "nimbrix 1.0".
  RenderRun(Document& document, const RenderJob& job, const std::string& software,
            CommandContext& context)
      : document_(document),
        job_(job),
        software_(software),
        context_(context),
        session_(document, job, context) {}

  /// Returns an exit code. All messages have been printed.
  int Run();

 private:
  struct Effect {
    BaseVideoPost* node = nullptr;
    VideoPostData* data = nullptr;
  };
  struct Times {
    double surfaces = 0, effects = 0, rays = 0, write = 0;
  };
  class OpenPhase;

  int RunFrames();
  int RunFrame(std::int32_t frame);
  int OpenFrame(RenderScene& scene, OpenPhase& phase);
  /// Returns kDone, or the exit code if the render must end. Sets `skip` if the frame must be
  /// skipped.
  int HandleMissing(bool& skip);
  int Opened(RenderResult result, const BaseVideoPost& node);
  int Deliver(const Picture& picture, const RenderScene& scene, Times times,
              const RayCounts& counts);
  void ReportFrame(const Picture& picture, const std::string& path, const Times& times,
                   const RayCounts& counts);
  void ReportEnd(int code, double seconds);

  Document& document_;
  const RenderJob& job_;
  std::string software_;
  CommandContext& context_;
  RenderSession session_;
  std::vector<Effect> effects_;
  std::int64_t pictures_ = 0, rays_ = 0, samples_ = 0;
  double ray_seconds_ = 0;
};

}  // namespace host
