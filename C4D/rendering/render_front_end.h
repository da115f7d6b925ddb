// The front end of a run that a render carries along.
#pragma once

#include <string>

#include "C4D/run/silent_front_end.h"
#include "host/interface/video_post.h"

namespace nbx {

/// `volume "smoke": `, the start of messages about a volume.
std::string subject(const host::BaseObject& volume);

/// Ends the run with the render, asks the render's user about an earlier run, and passes on
/// warnings.
class RenderFrontEnd final : public SilentFrontEnd {
 public:
  RenderFrontEnd(const host::BaseObject& volume, host::BaseRender& render)
      : volume_(volume), render_(render) {}

  void refuse(const std::string& title, const std::string& text) override;
  OldCache ask_about_cache(const OldRun& run) override;
  void warn(const std::string& text) override { render_.Warning(subject(volume_) + text); }
  Stop wanted_stop() const override { return render_.TestBreak() ? Stop::kNow : Stop::kNo; }
  int threads() const override { return render_.GetThreadCount(); }

 private:
  const host::BaseObject& volume_;
  host::BaseRender& render_;
};

}  // namespace nbx
