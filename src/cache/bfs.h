// The frame store: the cache of one directory. It stands between the simulation that makes frames,
// the writer thread that saves them, and everybody who reads them, and decides when a frame may
// leave memory.
//
// A table holds one slot a frame (or substep of one). Frames are reached through slot_handle.h
// alone: a handle shares the store, reads or writes one slot, and keeps that slot in the table.
//
//     empty    nothing in it      a new slot; a load that found no file
//     dirty    not yet on disk    stored and handed back; a writer that failed and will try again
//     clean    as on disk         loaded, saved, or given up by the writer
//
// The table has room for one slot and grows while all slots are in use; it falls back as they are
// handed back. A store that finds it full saves the frame in its way itself, so that a simulation
// which outruns the disk doesn't fill the memory.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "cache/bcf_file.h"
#include "cache/frame_names.h"
#include "cache/sim_frame.h"

namespace nbx {

class SlotHandle;

/// A frame that didn't reach the disk, and that nobody will try to save again.
struct LostFrame {
  int frame = 0, substep = 0;
  std::string error;
};

/// All operations may be called from any thread. One mutex guards the table; it isn't held while a
/// frame is read, nor while the writer thread saves one.
class BFS {
 public:
  BFS() = default;
  /// Saves what is dirty.
  ~BFS();
  BFS(const BFS&) = delete;
  BFS& operator=(const BFS&) = delete;

  /// Empties the table (see removeAllSlots), then selects the directory; see cache_prefix for the
  /// names of the files there. False if it doesn't exist or can't be read.
  bool setDirectory(const std::string& directory);

  std::string directory() const;
  std::string prefix() const;

  /// The absolute path of a frame's file.
  std::string fileName(int frame, int substep) const;
  /// True if the frame's file exists and its header is good; `path`, which may be null, is then its
  /// path.
  bool frameFile(int frame, int substep, std::string* path) const;
  /// Frame numbers on disk, ascending, by the file names; substep files don't count.
  std::vector<int> frames() const;

  /// Writes a frame that is in no slot under its name at once, on this thread, with the log lines
  /// of the writer, and sets `frame.saved` to the result. Waits for those who hold the frame of
  /// that number. False if it isn't on disk; last_error() then tells why.
  bool write_through(SimFrame& frame);

  /// Saves every dirty frame but those that are just being stored. False if one stays dirty.
  bool finish_writes();
  /// Saves and drops every frame. Waits until all handles are back: the caller must hold none.
  void removeAllSlots();

  /// Copies frames and states, with their notes, into a folder inside of `target`: of the name
  /// `as`, or where that is empty of this directory's name. Both are made if missing. Frames get
  /// the prefix of the new place; other files keep their names. Files that are there already stay:
  /// one with other bytes is a failure. Saves what is dirty first, and keeps everybody else out of
  /// the store. `progress`, which may be empty, hears of the files done and their number. False,
  /// after a log line, if anything fails; what was copied so far stays.
  bool copyDir(const std::string& target, const std::function<void(int, int)>& progress,
               const std::string& as = {});
  /// True if `folder` holds nothing of a cache but what a copy of this one has: it is a copy, whole
  /// or in part, or is empty or missing.
  bool copy_fits(const std::string& folder);

  /// Why the last frame that didn't reach the disk didn't.
  std::string last_error() const;
  /// The number of lost frames since the directory was set, and those since the last call.
  int frames_lost() const;
  std::vector<LostFrame> take_lost_frames();
  /// Seconds for which the writer wasn't fast enough: others saved a frame that was in their way,
  /// or waited for one that was being saved, or wrote through.
  double seconds_waited() const;
  /// Bytes that the writer wrote since the directory was set, or since `recount_bytes`.
  std::uint64_t bytesWritten() const;
  /// Lets bytesWritten() go on from the sizes of the files up to frame `last`.
  void recount_bytes(int last);

  // Of the files that are written.
  std::atomic<Codec> codec{Codec::kRunLength};
  std::atomic<Sync> sync{Sync::kDisk};

 private:
  friend class SlotHandle;
  using Lock = std::unique_lock<std::mutex>;
  enum class State { kEmpty, kDirty, kClean };

  // All but `data` is guarded by the store's mutex. Reader and writer marks guard `data`: they are
  // no locks of their own, so a handle may go back on another thread, and taking one can't be in
  // the wrong order with the mutex.
  struct Slot {
    Slot(int f, int s) : frame(f), substep(s) { data.substep = s; }
    const int frame, substep;
    SimFrame data;
    State state = State::kEmpty;
    int references = 0;    // handles, those who wait for the slot, and the writer thread
    int readers = 0;       // handles, and the writer thread while it saves
    bool writing = false;  // somebody loads or stores; the state is then kEmpty
    bool claimed = false;  // the writer thread will come to it in this pass
    bool saving = false;   // the writer thread is at it
  };

  // Where files go, and how.
  struct Place {
    std::string directory, prefix;
    Codec codec;
    Sync sync;
    std::string file(int frame, int substep) const;
    bool readable() const;
  };
  struct Saved {
    bool settled = false;    // nothing is left to try
    std::uint64_t size = 0;  // 0 if the frame isn't on disk
    std::string error;
  };

  // For handles. Null if the frame isn't there.
  Slot* open_for_reading(int frame, int substep, bool load, bool force);
  Slot* open_for_storing(int frame, int substep);
  void give_back(Slot& slot, bool wrote, bool stored, bool force);

  Slot& acquire(int frame, int substep);
  void release(Slot& slot, bool force);
  bool load(Lock& lock, Slot& slot);
  void remove(Slot& slot);
  void lose(int frame, int substep, const std::string& error);
  void removeAllSlots(Lock& lock);
  bool finish_writes(Lock& lock);

  void run();
  void save_pass(Lock& lock);
  void save_claimed(Lock& lock, Slot& slot);
  void storeSlot(Slot& slot);
  void settle(Slot& slot, const Saved& saved);
  Saved save_unlocked(Lock& lock, const SimFrame& frame, int number);
  static Saved save(const SimFrame& frame, int number, const Place& place, BcfFile& out);
  std::unique_ptr<BcfFile> take_file();
  void start_writer();

  Place place() const;
  bool copy_files(const std::string& folder, const std::function<void(int, int)>& progress) const;

  mutable std::mutex mutex_;         // guards all below
  std::condition_variable changed_;  // a mark, a reference or the table changed
  std::map<std::uint64_t, Slot> slots_;
  std::size_t max_slots_ = 1;
  std::string directory_, prefix_, last_error_;
  std::uint64_t bytes_written_ = 0;
  int frames_lost_ = 0;
  std::vector<LostFrame> lost_frames_;
  double seconds_waited_ = 0;
  std::vector<std::unique_ptr<BcfFile>> idle_files_;  // their buffers serve the next frame

  std::thread writer_;  // started by the first frame that is stored
  std::condition_variable due_;
  bool work_ = false, exit_ = false;
};

}  // namespace nbx
