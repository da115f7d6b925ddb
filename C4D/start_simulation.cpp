// The start of a user's run: questions and refusals, on the main thread.
#include <QFileInfo>
#include <string>

#include "C4D/host_access.h"
#include "C4D/load_string.h"
#include "C4D/preferences.h"
#include "C4D/simulation_thread.h"
#include "C4D/volume_cache.h"
#include "C4D/volume_parameters.h"
#include "host/interface/camera.h"

namespace nbx {

namespace {

/// Gives the volume a new cache, beside the one it has.
bool move_to_new_cache(host::BaseObject& volume) {
  set_cache_dir_data(volume, {cache_dir_data(volume).base, ""});
  return !cache_directory(volume, true).empty();
}

}  // namespace

bool SimulationThread::start_simulation(host::BaseObject* object, bool continue_run,
                                        RunDialog& dialog) {
  const auto refuse = [&dialog](int title) {
    dialog.refuse(load_string(title), load_string(title + 1));
    return false;
  };
  if (!object) return refuse(10043);
  const std::string directory = cache_directory(*object, false);
  if (!directory.empty() && cache_locked(directory)) return refuse(10093);
  if (IsRunning()) {
    if (!dialog.ask_to_stop(load_string(10028), load_string(10029))) return false;
    stop(true);
  }
  End(true);
  if (!continue_run && preference(PREF_ASK_AUTOSAVE, true) && !directory.empty() &&
      QFileInfo::exists(QString::fromStdString(directory + "/Autosave.c4d"))) {
    const OldCache choice = dialog.ask_about_cache(load_string(10085), load_string(10086));
    if (choice == OldCache::kStop) return false;
    if (choice == OldCache::kMakeNew && !move_to_new_cache(*object)) return refuse(10012);
  }
  const host::BaseDocument& document = object->GetDocument();
  const double rate =
      document.GetActiveRenderData().GetDataInstance().GetReal(host::RENDER_FRAME_RATE);
  std::string ignored;
  if (rate > 0 && host::FrameRate::FromReal(rate, ignored) != document.GetFps())
    dialog.message(load_string(10119), load_string(10118));
  autosave(*object);

  stop_at_frame_end_ = stop_now_ = false;
  while (question_done_.try_acquire()) {
  }
  object_link_ = object;
  continue_run_ = continue_run;
  dialog_ = &dialog;
  set_running_simulation(this);
  return C4DThread::Start();
}

}  // namespace nbx
