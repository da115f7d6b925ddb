// Brings a run to the state that it continues from, if there is one.
#pragma once

#include <string>

#include "C4D/run/run_origin.h"
#include "C4D/run/run_parts.h"
#include "C4D/run/state_saver.h"

namespace nbx {

/// Used while a run prepares: `load`, then the document is brought to `times.now`, then `finish`.
class StateLoader {
 public:
  StateLoader(RunOrigin origin, const RunParts& run) : origin_(std::move(origin)), run_(run) {}

  /// Gives the simulation the gas of the state. `times.now` becomes the time of the state if the
  /// run continues there. Warns if a state was wanted and there is none, and of what a state lacks.
  /// Throws what reading a grid throws.
  void load();
  /// Sets the clock, and takes from the state what a frame doesn't hold: wind, noise, the motion of
  /// solids. Warns of differences between the scene and that of the state.
  void finish(StateSaver& saver);

  /// After `load`. New: without a state. Continued: with one whose frame is already stored.
  bool is_new() const { return beginning_ == Beginning::kNew; }
  bool continued() const { return beginning_ == Beginning::kContinued; }

 private:
  enum class Beginning { kNew, kFromState, kContinued };

  void read();
  void warn_of_missing_grids(bool has_gas);
  void warn_of_missing_channels();
  void restore_noise(const Fraction& scale);
  void restore_wind();
  void warn_of_differences();

  RunOrigin origin_;
  const RunParts run_;
  Beginning beginning_ = Beginning::kNew;
};

}  // namespace nbx
