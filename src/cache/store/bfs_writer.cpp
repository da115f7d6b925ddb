// IOW, the writer of the frame store: takes dirty frames off the simulation's back. The table is
// its queue; each handle that goes back makes it look for dirty slots.
#include <algorithm>
#include <system_error>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

#include "cache/bfs.h"
#include "util/format_size.h"
#include "util/log.h"
#include "util/stopwatch.h"

namespace nbx {

namespace {

/// Lets a lock go while it lives.
class Unlocked {
 public:
  explicit Unlocked(std::unique_lock<std::mutex>& lock) : lock_(lock) { lock_.unlock(); }
  ~Unlocked() { lock_.lock(); }
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;

 private:
  std::unique_lock<std::mutex>& lock_;
};

}  // namespace

// A thread that can't be started is no failure: frames are then saved as they leave the table.
void BFS::start_writer() {
  if (writer_.joinable()) return;
  try {
    writer_ = std::thread(&BFS::run, this);
  } catch (const std::system_error& e) {
    LogMessage() << "Failed to start IOW: " << e.what();
  }
}

void BFS::run() {
  // The lowest priority; on Linux that of a thread is its nice value.
  setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 19);
  Lock lock(mutex_);
  while (!exit_) {
    if (work_) {
      work_ = false;
      save_pass(lock);
    } else {
      due_.wait(lock);
    }
  }
  LogMessage() << "IOW exiting";
}

// A reference for each dirty slot first, so that none is saved by others while it waits.
void BFS::save_pass(Lock& lock) {
  for (auto& [key, slot] : slots_)
    if (slot.state == State::kDirty) {
      slot.claimed = true;
      ++slot.references;
    }
  for (;;) {
    const auto next = std::find_if(slots_.begin(), slots_.end(),
                                   [](const auto& entry) { return entry.second.claimed; });
    if (next == slots_.end()) return;
    Slot& slot = next->second;
    slot.claimed = false;
    try {
      // One that is just being stored anew isn't dirty; its handle makes another pass.
      if (slot.state == State::kDirty) save_claimed(lock, slot);
    } catch (const Exception& e) {
      LogMessage() << "NBX Exception in IOW: " << e.what();
    } catch (const std::bad_alloc&) {
      LogMessage() << "Bad allocation in IOW";
    } catch (...) {
      LogMessage() << "Unknown exception in IOW";
    }
    release(slot, true);
  }
}

void BFS::save_claimed(Lock& lock, Slot& slot) {
  struct Mark {
    explicit Mark(Slot& s) : slot(s) { ++slot.readers, slot.saving = true; }
    ~Mark() { --slot.readers, slot.saving = false; }
    Slot& slot;
  } const mark(slot);
  settle(slot, save_unlocked(lock, slot.data, slot.frame));
}

// Saves a slot that nobody writes to, with the mutex held.
void BFS::storeSlot(Slot& slot) {
  if (slot.state != State::kDirty) return;
  std::unique_ptr<BcfFile> file = take_file();
  settle(slot, save(slot.data, slot.frame, place(), *file));
  idle_files_.push_back(std::move(file));
}

// The mutex is let go meanwhile, and held again whatever happens.
BFS::Saved BFS::save_unlocked(Lock& lock, const SimFrame& frame, int number) {
  const Place here = place();
  std::unique_ptr<BcfFile> file = take_file();
  Saved saved;
  {
    const Unlocked unlocked(lock);
    saved = save(frame, number, here, *file);
  }
  idle_files_.push_back(std::move(file));
  return saved;
}

// As many as frames are saved at once are ever made.
std::unique_ptr<BcfFile> BFS::take_file() {
  if (idle_files_.empty()) return std::make_unique<BcfFile>();
  std::unique_ptr<BcfFile> file = std::move(idle_files_.back());
  idle_files_.pop_back();
  return file;
}

void BFS::settle(Slot& slot, const Saved& saved) {
  bytes_written_ += saved.size;
  if (saved.settled) slot.state = State::kClean;
  if (saved.size == 0) last_error_ = saved.error;
  if (saved.size == 0 && saved.settled) lose(slot.frame, slot.substep, saved.error);
  changed_.notify_all();
}

BFS::Saved BFS::save(const SimFrame& frame, int number, const Place& place, BcfFile& out) {
  Saved saved;
  try {
    if (!place.readable()) {
      saved.settled = true;
      saved.error = "The cache directory " + place.directory + " can't be read.";
      LogMessage() << "IOW: NOT writing frame " << number;
      return saved;
    }
    const std::string path = place.file(number, frame.substep);
    const Stopwatch watch;
    saved.size = frame.write_loaded(out, path, place.codec, place.sync, saved.error);
    if (saved.size == 0) LogMessage() << "IOW: Failed to write file " << path;
    LogMessage() << "wrote frame " << number << "(" << format_size(saved.size, 2) << ") in "
                 << watch.seconds();
    saved.settled = true;
  } catch (const Exception& e) {
    saved.error = e.what();
    LogMessage() << "Exception caught in BFS::storeSlot: " << e.what();
  } catch (const std::exception& e) {
    saved.error = e.what();
    LogMessage() << "Unknown Exception caught in BFS::storeSlot";
  }
  return saved;
}

// The frame's slot stands empty meanwhile, as a lock: readers have a file that doesn't change under
// them, and what was in memory is out of date.
bool BFS::write_through(SimFrame& frame) {
  Slot& slot = *open_for_storing(frame.frameTime.frame(), frame.substep);
  Lock lock(mutex_);
  const Stopwatch watch;
  const Saved saved = save_unlocked(lock, frame, slot.frame);
  frame.saved = saved.size > 0;
  seconds_waited_ += watch.seconds();
  if (!frame.saved) {
    last_error_ = saved.error;
    lose(slot.frame, slot.substep, saved.error);
  }
  lock.unlock();
  give_back(slot, true, false, true);
  return frame.saved;
}

bool BFS::finish_writes() {
  Lock lock(mutex_);
  return finish_writes(lock);
}

bool BFS::finish_writes(Lock& lock) {
  changed_.wait(lock, [this] {
    return std::none_of(slots_.begin(), slots_.end(),
                        [](const auto& entry) { return entry.second.saving; });
  });
  bool clean = true;
  for (auto& [key, slot] : slots_) {
    storeSlot(slot);
    clean = clean && slot.state != State::kDirty;
  }
  return clean;
}

}  // namespace nbx
