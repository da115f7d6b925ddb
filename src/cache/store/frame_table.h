// The table of a frame store and the thread that saves its frames. Only the store's own files
// include this.
#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include "cache/bfs.h"

namespace nbx {

/// One frame of the table. The table's mutex guards everything except `data`, which the marks
/// `readers` and `writing` guard. The marks aren't locks, so a handle may be given back on another
/// thread, and there is no order to keep between them and the mutex.
struct BFS::Slot {
  enum class State { kEmpty, kDirty, kClean };

  Slot(int f, int s) : frame(f), substep(s) { data.substep = s; }
  const int frame, substep;
  SimFrame data;
  State state = State::kEmpty;
  int references = 0;    // handles, threads that wait for the slot, and the writer thread
  int readers = 0;       // handles, and the writer thread while it saves
  bool writing = false;  // being loaded or stored; the state is then kEmpty
  bool claimed = false;  // the writer thread will save it in this pass
  bool saving = false;   // the writer thread is saving it
};

/// One mutex guards the table. It isn't held while a frame is read, nor while the writer thread
/// saves one. Functions expect the mutex to be locked unless their comment says otherwise; those
/// that take the Lock may unlock it meanwhile.
struct BFS::Table {
  using Lock = std::unique_lock<std::mutex>;
  using State = Slot::State;

  // Where and how files are written.
  struct Place {
    std::string directory, prefix;
    Codec codec;
    Sync sync;
    std::string file(int frame, int substep) const;
    bool readable() const;
  };
  struct Saved {
    bool settled = false;    // there is nothing left to try
    std::uint64_t size = 0;  // 0 if the frame isn't on disk
    std::string error;
  };

  explicit Table(const BFS& owner) : store(owner) {}
  /// Stops the writer thread, then saves what is dirty.
  ~Table();

  // For handles; these three lock the mutex. A null slot means that the frame isn't there.
  Slot* open_for_reading(int frame, int substep, bool load, bool force);
  Slot* open_for_storing(int frame, int substep);
  enum class Use { kRead, kStored, kAbandoned };  // abandoned: opened for storing but not stored
  void give_back(Slot& slot, Use use, bool force);

  Slot& acquire(int frame, int substep);
  void release(Slot& slot, bool force);
  bool load(Lock& lock, Slot& slot);
  void remove(Slot& slot);
  void drop(Slot& slot);
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

  Place place() const { return {directory, prefix, store.codec, store.sync}; }

  const BFS& store;
  std::mutex mutex;                 // guards everything below
  std::condition_variable changed;  // a mark, a reference or the table changed
  std::map<std::uint64_t, Slot> entries;
  std::size_t max_slots = 1;
  std::string directory, prefix, last_error;
  std::uint64_t bytes_written = 0;
  int frames_lost = 0;
  std::vector<LostFrame> lost_frames;
  std::set<int> unsaved;  // frames that were stored and aren't on disk
  double seconds_waited = 0;
  std::vector<std::unique_ptr<BcfFile>> idle_files;   // kept for their buffers
  std::vector<std::vector<ByteBuffer>> idle_buffers;  // of frames that have left

  std::thread writer;  // started by the first frame that is stored
  std::condition_variable due;
  bool work = false, stopping = false;
};

}  // namespace nbx
