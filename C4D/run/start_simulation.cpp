// The start of a user's run: questions and refusals, on the main thread.
#include <string>

#include "C4D/run/run_checks.h"
#include "C4D/run/simulation_thread.h"
#include "C4D/services/texts.h"
#include "C4D/settings/volume_cache.h"
#include "host/interface/camera.h"

namespace nbx {

bool SimulationThread::start_simulation(host::BaseObject* object, bool continue_run,
                                        RunDialog& dialog, std::optional<int> at_most) {
  const auto refuse = [&dialog](const texts::Box& box) {
    dialog.refuse(box.title, box.text);
    return false;
  };
  if (!object) return refuse(texts::kNoVolume);
  if (const std::string why = what_locks(*object); !why.empty()) {
    dialog.refuse(texts::kCacheLocked.title + " (" + why + ")", texts::kCacheLocked.text);
    return false;
  }
  if (IsRunning()) {
    if (!dialog.ask_to_stop(texts::kRunning.title, texts::kRunning.text)) return false;
    stop(true);
  }
  End(true);
  const std::string directory = find_cache(*object);
  object_link_ = object;
  continue_run_ = continue_run;
  dialog_ = &dialog;
  state_.reset();
  if (continue_run ? !find_origin(directory, at_most) : !settle_with_earlier_run(directory))
    return false;
  const host::BaseDocument& document = object->GetDocument();
  const double rate =
      document.GetActiveRenderData().GetDataInstance().GetReal(host::RENDER_FRAME_RATE);
  std::string ignored;
  if (rate > 0 && host::FrameRate::FromReal(rate, ignored) != document.GetFps())
    dialog.message(texts::kFrameRatesDiffer.title, texts::kFrameRatesDiffer.text);
  autosave(*object);

  stop_at_frame_end_ = stop_now_ = false;
  while (question_done_.try_acquire()) {
  }
  return C4DThread::Start();
}

}  // namespace nbx
