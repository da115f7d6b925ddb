#include "C4D/commands/run_report.h"

#include <cmath>
#include <cstdio>

#include "C4D/commands/run_statistics.h"
#include "math/field.h"
#include "util/format_size.h"
#include "util/memory.h"

namespace nbx {

namespace {

constexpr double kSecondsBetweenLines = 0.1;
constexpr int kFewFrames = 3;

/// "0:07", "12:34", "3:02:01".
std::string clock(double seconds) {
  const long s = std::lround(seconds);
  char text[32];
  if (s < 3600)
    std::snprintf(text, sizeof text, "%ld:%02ld", s / 60, s % 60);
  else
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", s / 3600, s / 60 % 60, s % 60);
  return text;
}

}  // namespace

/// "frame 12 (13 of 101), 0.45 s a frame, 0:40 left, 310.20MB", without what isn't known yet.
std::string RunReport::line(int number, double frames_done) const {
  char text[96];
  std::snprintf(text, sizeof text, "frame %d (%d of %d)", number,
                std::min(static_cast<int>(frames_done) + 1, frames_total_), frames_total_);
  std::string result = text;
  // The first frame says nothing about the rate: it only holds the sources.
  if (frames_done > 1.2) {
    const double rate = seconds() / frames_done;
    std::snprintf(text, sizeof text, ", %.2f s a frame, %s left", rate,
                  clock(rate * (frames_total_ - frames_done)).c_str());
    result += text;
  }
  return result + ", " + format_size(resident_memory(), 2);
}

void RunReport::step(int frame, const StepClock& step, int steps_remaining, int done, int total) {
  if (since_line_.seconds() < kSecondsBetweenLines || total <= 0) return;
  since_line_.lap();
  char substep[48];
  std::snprintf(substep, sizeof substep, ", substep %d of %d", step.step_index + 1,
                step.step_index + steps_remaining);
  context_.Progress(line(frame + 1, frames_done_ + static_cast<double>(done) / total) + substep,
                    false);
}

void RunReport::substep(int frame, const Simulation3D& sim) {
  if (!context_.Json()) return;
  const StepClock& s = sim.clock;
  if (s.step_index == 1) times_before_ = {};
  host::EventFields fields{
      {"frame", std::int64_t{frame + 1}}, {"substep", std::int64_t{s.step_index}}, {"dt", s.dt}};
  add_times(fields, difference(sim.stage_times(), times_before_));
  add_extent(fields, sim);
  context_.Event("substep", fields);
  times_before_ = sim.stage_times();
}

void RunReport::lost(const std::vector<LostFrame>& frames) {
  for (const LostFrame& frame : frames) {
    ++frames_lost_;
    context_.Error("frame " + std::to_string(frame.frame) + " is not stored: " + frame.error);
    context_.Event("lost", {{"frame", std::int64_t{frame.frame}}, {"error", frame.error}});
  }
}

void RunReport::frame(int number, Simulation3D& sim) {
  ++frames_done_;
  const double seconds = since_frame_.lap();
  context_.Progress(line(number, frames_done_ - 1e-9), true);
  note_losses(number, sim);
  note_substeps(sim);
  note_pressure(number, sim);
  if (!holds_gas(sim)) ++frames_empty_;
  if (!context_.Json()) return;

  host::EventFields fields{{"frame", std::int64_t{number}},
                           {"substeps", std::int64_t{sim.clock.step_index}},
                           {"seconds", seconds}};
  add_times(fields, sim.stage_times());
  fields.emplace_back("seconds_store", sim.stage_times().sav);
  fields.emplace_back("seconds_disk", sim.stage_times().dsk);
  add_extent(fields, sim);
  fields.emplace_back("field_allocations", static_cast<std::int64_t>(field_allocations()));
  add_health(fields, measure_health(sim));
  context_.Event("frame", fields);
}

void RunReport::note_losses(int number, Simulation3D& sim) {
  const std::array<bool, 6> touches = touched_faces(sim);
  for (std::size_t f = 0; f < 6; ++f)
    if (touches[f] && sim.domain.face_closed[f] == 0 && !leaves_from_[f]) leaves_from_[f] = number;
}

void RunReport::note_substeps(Simulation3D& sim) {
  constexpr double most = 1e6;
  const int wanted = static_cast<int>(std::min(wanted_substeps(sim), most));
  substeps_wanted_ = std::max(substeps_wanted_, wanted);
  max_substeps_ = sim.params.max_substeps;
  if (wanted > max_substeps_) ++frames_beyond_cfl_;
}

// Warns of the first frame whose pressure did not converge, and says of each frame how much gas had
// nowhere to go.
void RunReport::note_pressure(int number, Simulation3D& sim) {
  char text[192];
  const double residual = sim.pressure().frame_residual();
  const double tolerance = sim.params.pressure_tolerance;
  // The solver compares in floats.
  if (residual > static_cast<double>(static_cast<float>(tolerance))) {
    if (++frames_above_tolerance_ == 1) {
      std::snprintf(text, sizeof text,
                    "frame %d: the pressure did not converge: a divergence of %.3g 1/s is left, "
                    "more than the tolerance of %.3g",
                    number, residual, tolerance);
      context_.Warning(text);
    }
  }
  constexpr double kRounding = 1e-6;  // of the volume of the box
  const Vec3i n = sim.domain.active_box.size();
  const double box = std::pow(sim.domain.dx, 3) * n[0] * n[1] * n[2];
  const double confined = sim.pressure().frame_confined();
  if (std::abs(confined) <= kRounding * box) return;
  std::snprintf(text, sizeof text, "frame %d: %.3g m3 of gas %s: the room is closed on all sides",
                number, std::abs(confined), confined > 0 ? "had nowhere to go" : "is missing");
  context_.Note(text);
}

std::string RunReport::missing_substeps() const {
  if (frames_beyond_cfl_ <= kFewFrames) return {};
  return "; " + std::to_string(frames_beyond_cfl_) + " frames needed up to " +
         std::to_string(substeps_wanted_) + " substeps, but max_substeps is " +
         std::to_string(max_substeps_);
}

std::string RunReport::losses() const {
  std::string text;
  for (std::size_t f = 0; f < 6; ++f) {
    if (!leaves_from_[f]) continue;
    text += text.empty() ? "; gas leaves through " : ", ";
    text += kFaceNames[f];
    text += " from frame " + std::to_string(*leaves_from_[f]);
  }
  return text;
}

}  // namespace nbx
