#include "C4D/rendering/render_front_end.h"

namespace nbx {

std::string subject(const host::BaseObject& volume) {
  return "volume \"" + volume.GetName() + "\": ";
}

void RenderFrontEnd::refuse(const std::string& title, const std::string& text) {
  render_.Refuse(host::Refusal::NotAllowed, subject(volume_) + title + ": " + text);
}

void RenderFrontEnd::warn(const std::string& text) { render_.Warning(subject(volume_) + text); }

OldCache RenderFrontEnd::ask_about_cache(const std::string& title, const std::string&) {
  switch (render_.AskAboutOldFiles()) {
    case host::OldFiles::Overwrite:
      return OldCache::kOverwrite;
    case host::OldFiles::MakeNew:
      return OldCache::kMakeNew;
    case host::OldFiles::Unanswered:
      break;
  }
  refuse(title, "give --overwrite to simulate over it, --new-cache to leave it alone, or --set " +
                    volume_.GetName() + ".simulate_on_render=false to render its frames");
  return OldCache::kStop;
}

}  // namespace nbx
