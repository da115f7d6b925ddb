// BFS, the frame store: the cache of one directory. It connects the simulation that makes frames,
// the thread that saves them and everyone who reads them, and decides when a frame may leave
// memory.
//
// A table holds one slot per frame (or per substep of a frame). Frames are reached only through
// slot_handle.h: a handle shares the store, reads or writes one slot, and keeps that slot in the
// table.
//
//     empty    no data             a new slot; a load that found no file
//     dirty    not yet on disk     stored and handed back; a write that failed and will be repeated
//     clean    as on disk          loaded, saved, or given up by the writer
//
// The table has room for one slot. It grows while all slots are in use and shrinks as they are
// handed back. A store into a full table first saves the frame that it displaces, so a simulation
// that is faster than the disk doesn't fill the memory.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cache/bcf_file.h"
#include "cache/frame_names.h"
#include "cache/sim_frame.h"
#include "util/outcome.h"

namespace nbx {

class SlotHandle;

/// A frame that didn't reach the disk and won't be tried again.
struct LostFrame {
  int frame = 0, substep = 0;
  std::string error;
};

/// All operations may be called from any thread.
class BFS {
 public:
  BFS();
  /// Saves all dirty frames.
  ~BFS();
  BFS(const BFS&) = delete;
  BFS& operator=(const BFS&) = delete;

  /// Empties the table (see removeAllSlots), then selects the directory; see cache_prefix for the
  /// names of its files. False if it doesn't exist or can't be read.
  bool setDirectory(const std::string& directory);

  std::string directory() const;
  std::string prefix() const;

  /// The absolute path of a frame's file.
  std::string fileName(int frame, int substep) const;
  /// Whether the frame's file exists and has a good header. If so, and `path` isn't null, sets it
  /// to the file's path.
  bool frameFile(int frame, int substep, std::string* path) const;
  /// Frame numbers on disk in ascending order, by the file names; without substep files.
  std::vector<int> frames() const;

  /// Writes a frame that is in no slot, at once and on this thread, with the log lines of the
  /// writer. Waits for everyone who holds the frame of that number. Returns, and sets `frame.saved`
  /// to, whether it is on disk; if not, it is among the lost frames.
  bool write_through(SimFrame& frame);

  /// Saves every dirty frame, except those that are being stored now. Fails if one stays dirty.
  Outcome finish_writes();
  /// Saves and drops every frame. Waits for all handles, so the caller must hold none.
  void removeAllSlots();

  /// Copies frames and states, with their notes, into the folder `as` inside of `target`; by
  /// default the folder gets this directory's name. Both are created if missing. Frames get the
  /// prefix of the new place; other files keep their names. A file that is already there stays, and
  /// is a failure if its bytes differ. Saves dirty frames first; the store is locked meanwhile.
  /// `progress`, which may be empty, receives the number of files done and the total. Logs a
  /// failure, which leaves what was copied so far.
  Outcome copyDir(const std::string& target, const std::function<void(int, int)>& progress,
                  const std::string& as = {});
  /// Whether all cache files in `folder` are as a copy of this cache would have them: it is a
  /// complete or partial copy, or is empty or missing.
  bool copy_fits(const std::string& folder);

  /// False for a frame that was stored since the directory was set and isn't on disk: it waits to
  /// be saved, or it is lost.
  bool is_saved(int frame) const;
  /// The number of lost frames since the directory was set, and those since the last call.
  int frames_lost() const;
  std::vector<LostFrame> take_lost_frames();
  /// Seconds that callers lost because the writer was too slow: they saved a frame themselves,
  /// waited for one that was being saved, or wrote through.
  double seconds_waited() const;
  /// Bytes written since the directory was set, or since `recount_bytes`.
  std::uint64_t bytesWritten() const;
  /// Restarts bytesWritten() at the total size of the files up to frame `last`.
  void recount_bytes(int last);

  // For the files that will be written.
  std::atomic<Codec> codec{Codec::kRunLength};
  std::atomic<Sync> sync{Sync::kDisk};

 private:
  friend class SlotHandle;
  struct Slot;
  struct Table;  // store/frame_table.h

  const std::unique_ptr<Table> table_;
};

}  // namespace nbx
