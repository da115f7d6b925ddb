// Saves the states of a run to continue from: at its end, and on the way if the volume asks for it.
#pragma once

#include <optional>
#include <set>
#include <string>

#include "C4D/run/run_parts.h"
#include "C4D/run/states/state_directory.h"

namespace nbx {

/// Once a run has saved a state, the states of other runs go, so that nobody continues from one
/// that doesn't belong to the frames of the cache.
class StateSaver {
 public:
  explicit StateSaver(const RunParts& run) : run_(run) {}

  /// The run has begun at the state in that file, which counts as its own. With `continues`, so do
  /// the states of the frames before it.
  void inherit(const std::string& path, bool continues);

  /// After a frame: saves the state if the volume wants one of this frame, with a warning if that
  /// is impossible. Not at the end of the run, which has its own.
  void save_if_due();
  /// At the end of the run, after a whole frame.
  void save_last();

 private:
  void save(const std::string& path);
  void remove_others();
  bool is_own(const StateFile& state) const;

  const RunParts run_;
  std::set<std::string> own_;          // files that this run has saved, or has come from
  std::optional<int> continued_from_;  // frame of the state that a continued run has come from
};

}  // namespace nbx
