// Whether the frames of a cache are those that its scene would give today, and if not, why.
//
// The scene that the last run has saved in the cache gives the values at the time of every frame
// that this run has stored. The notes of a state give those at its own frame, with the shapes of
// meshes, and reach back to the state before; they also cover the frames of earlier runs. Gas
// remembers: a frame after the first difference is stale too, even if the difference is gone by
// then. Meshes that deform are compared at the frames of states alone.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/interface/scene.h"

namespace nbx {

enum class FrameValidity { kValid, kStale, kMissing, kDamaged };

/// A value of the scene that differs from that of the run.
struct HistoryChange {
  std::string name;                          // "smoke.vorticity"
  std::optional<std::string> before, after;  // nothing: the other scene doesn't have it
  enum class Of { kGas, kFrames, kPicture } of = Of::kGas;
  std::set<int> frames;  // of the cache that are stale by it; none for kPicture
  std::string text;      // "smoke.vorticity was 2 and is now 3"
};

struct FrameFinding {
  int frame = 0;
  FrameValidity validity = FrameValidity::kValid;
  std::string reason;  // of damage, or of being stale; of several changes the first
};

struct FrameHistory {
  std::vector<FrameFinding> frames;  // of the range and of the cache, ascending
  std::vector<HistoryChange> changes;
  std::set<int> unknown;  // frames for which the cache keeps no scene; they count as valid

  std::size_t count(FrameValidity validity) const;
};

/// Reads all frames of the cache, and compares its scene with that of the volume. `progress`
/// receives the number of frames read and the total; it returns false to break off, and then
/// nothing is returned. Leaves the document at the start of the range.
std::optional<FrameHistory> read_history(host::BaseObject& volume, const std::string& directory,
                                         const std::function<bool(int, int)>& progress);

}  // namespace nbx
