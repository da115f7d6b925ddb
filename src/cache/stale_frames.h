// Frames that an earlier run has left in a cache: a later run has begun before them, and hasn't
// reached them or has ended before them. They are marked in the file "StaleFrames.json" of the
// cache. The file is replaced as a whole, and a frame stays marked until its new version is on
// disk, so a killed run never leaves an old frame without a mark.
#pragma once

#include <set>
#include <string>

#include "cache/bfs.h"
#include "util/outcome.h"

namespace nbx {

/// "0-20, 23": the numbers as ranges.
std::string frame_ranges(const std::set<int>& frames);
/// "frames 0-20, 23", "frame 4".
std::string named_frames(const std::set<int>& frames);

/// Finds the frames of a cache that are marked and still there. A failure if the mark can't be
/// read; a cache without a mark has none.
Outcome read_stale_frames(std::set<int>& frames, const std::string& directory);
/// The same; none if the mark can't be read.
std::set<int> stale_frames(const std::string& directory);

/// The other frames of a cache: those of its last run.
std::set<int> own_frames(const std::string& directory);

/// Keeps the mark of a cache while a run stores its frames there. The store must outlive it.
class StaleMark {
 public:
  explicit StaleMark(const BFS& store) : store_(store) {}

  /// Before the run stores anything: marks the frames from `first` on. Others keep their marks.
  Outcome begin(int first);
  /// A frame of the run has gone to the store.
  void stored(int frame);
  /// Removes the marks of the run's frames that are on disk.
  Outcome update();
  /// The same at the end of the run. If it has stored no frame, all marks are as before.
  Outcome end();

 private:
  Outcome write() const;

  const BFS& store_;
  std::set<int> before_, marked_;
  std::set<int> waiting_;  // frames of the run that may not be on disk yet
  bool stored_any_ = false;
};

}  // namespace nbx
