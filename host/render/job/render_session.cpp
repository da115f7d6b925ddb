#include "host/render/job/render_session.h"

#include <algorithm>
#include <cmath>

namespace host {

void RenderSession::SetFrame(std::int32_t frame, const RenderScene& scene) {
  frame_ = frame;
  camera_position_ = scene.camera.Place().off;
  missing_.clear();
  queries_.clear();
  counts_.assign(job_.threads, {});
  for (std::int32_t i = 0; i < job_.threads; ++i) queries_.emplace_back(scene, i, counts_[i]);
}

void RenderSession::Refuse(Refusal kind, const std::string& why) {
  refused_ = kind == Refusal::BadScene ? kBadInput : kFailed;
  context_.Error(document_.GetDocumentName() + ": " + why);
}

void RenderSession::SetStatusText(const std::string& text) {
  const std::lock_guard lock(mutex_);
  status_ = text;
  context_.Progress("frame " + std::to_string(frame_) + ": " + status_, false);
}

void RenderSession::SetProgress(double share) {
  const std::lock_guard lock(mutex_);
  const int percent = static_cast<int>(std::floor(100 * std::clamp(share, 0.0, 1.0)));
  const char* stopping = context_.Interrupts() > 0 ? "; stops after this frame" : "";
  context_.Progress("frame " + std::to_string(frame_) + ": " + status_ + " " +
                        std::to_string(percent) + " %" + stopping,
                    false);
}

}  // namespace host
