#include "C4D/run/simulation_thread.h"

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/coarse_run.h"
#include "C4D/run/earlier_run.h"
#include "C4D/run/run_checks.h"
#include "C4D/run/run_failure.h"
#include "C4D/services/host_access.h"
#include "C4D/services/texts.h"
#include "C4D/settings/volume_cache.h"
#include "host/interface/camera.h"
#include "util/log.h"

namespace nbx {

namespace {

SimulationThread* users_thread = nullptr;

bool renders_at_another_rate(const host::BaseDocument& document) {
  const double rate =
      document.GetActiveRenderData().GetDataInstance().GetReal(host::RENDER_FRAME_RATE);
  std::string ignored;
  return rate > 0 && host::FrameRate::FromReal(rate, ignored) != document.GetFps();
}

}  // namespace

SimulationThread* simulation_thread() { return users_thread; }
void set_simulation_thread(SimulationThread* thread) { users_thread = thread; }

SimulationThread::~SimulationThread() {
  stop(true);
  End(true);
}

bool SimulationThread::start_simulation(host::BaseObject* object, const RunRequest& request,
                                        RunFrontEnd& front_end) {
  const auto refuse = [&front_end](const texts::Box& box) {
    front_end.refuse(box.title, box.text);
    return false;
  };
  if (!object) return refuse(texts::kNoVolume);
  const bool upres = !request.source.empty();
  if (upres && !upres_source_ok(request.source)) return refuse(texts::kNoUpresSource);
  if (const Outcome unlocked = check_unlocked(*object, upres); !unlocked) {
    front_end.refuse(texts::kCacheLocked.title + " (" + unlocked.reason() + ")",
                     texts::kCacheLocked.text);
    return false;
  }
  if (IsRunning()) {
    if (!front_end.ask_to_stop(texts::kRunning.title, texts::kRunning.text)) return false;
    stop(true);
  }
  End(true);
  std::optional<RunOrigin> origin = settle_origin(*object, request, front_end);
  if (!origin) return false;
  origin->source = request.source;
  if (upres && origin->state &&
      !has_upres_factor(origin->state->frame, request.source,
                        ParameterReader(*object)(OVOLUME.UPRES_FACTOR)))
    return refuse(texts::kOtherUpresFactor);
  if (renders_at_another_rate(object->GetDocument()))
    front_end.message(texts::kFrameRatesDiffer.title, texts::kFrameRatesDiffer.text);
  autosave(*object);

  run_.reset();
  front_end_.emplace(front_end, *this);
  run_.emplace(object, std::move(*origin), *front_end_);
  outcome_ = Outcome::success();
  return Start();
}

void SimulationThread::stop(bool at_once) {
  if (front_end_) front_end_->stop(at_once);
}

void SimulationThread::answer(bool yes) {
  if (front_end_) front_end_->answer(yes);
}

void SimulationThread::stop_at_shutdown() {
  if (!IsRunning()) return;
  LogMessage() << "waiting for sim thread to terminate";
  stop(true);
  End(false);
}

void SimulationThread::Main() {
  outcome_ = outcome_of([this] { return prepare_and_step(); });
  const Outcome finished = outcome_of([this] { return run_->finish(); });
  if (outcome_) outcome_ = finished;
  post_event(kSimulationEvent, kEventFinished);
}

Outcome SimulationThread::prepare_and_step() {
  const Outcome prepared = run_->prepare();
  if (!prepared) post_event(kSimulationEvent, kEventGaveUp);
  while (run_->has_next()) run_->step();
  return prepared;
}

}  // namespace nbx
