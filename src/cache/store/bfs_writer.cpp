// The writer thread of the frame store, called IOW in the log: saves dirty frames while the
// simulation continues. The table is its queue; each handle that is given back makes it look for
// dirty slots.
#include <algorithm>
#include <system_error>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

#include "cache/store/frame_table.h"
#include "util/format_size.h"
#include "util/log.h"
#include "util/stopwatch.h"

namespace nbx {

namespace {

/// Unlocks a lock while it lives.
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

// If the thread can't be started, frames are saved when they leave the table.
void BFS::Table::start_writer() {
  if (writer.joinable()) return;
  try {
    writer = std::thread(&Table::run, this);
  } catch (const std::system_error& e) {
    LogMessage() << "Failed to start IOW: " << e.what();
  }
}

void BFS::Table::run() {
  // The lowest priority. On Linux a thread has a nice value of its own.
  setpriority(PRIO_PROCESS, gettid(), 19);
  Lock lock(mutex);
  while (!stopping) {
    if (work) {
      work = false;
      save_pass(lock);
    } else {
      due.wait(lock);
    }
  }
  LogMessage() << "IOW exiting";
}

// First takes a reference to each dirty slot, so that nobody else saves one while it waits.
void BFS::Table::save_pass(Lock& lock) {
  for (auto& [key, slot] : entries)
    if (slot.state == State::kDirty) {
      slot.claimed = true;
      ++slot.references;
    }
  for (;;) {
    const auto next = std::find_if(entries.begin(), entries.end(),
                                   [](const auto& entry) { return entry.second.claimed; });
    if (next == entries.end()) return;
    Slot& slot = next->second;
    slot.claimed = false;
    try {
      // A slot that is being stored again isn't dirty; its handle starts another pass.
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

void BFS::Table::save_claimed(Lock& lock, Slot& slot) {
  struct Mark {
    explicit Mark(Slot& s) : slot(s) { ++slot.readers, slot.saving = true; }
    ~Mark() { --slot.readers, slot.saving = false; }
    Slot& slot;
  } const mark(slot);
  settle(slot, save_unlocked(lock, slot.data, slot.frame));
}

// Saves a slot that nobody is writing, with the mutex locked.
void BFS::Table::storeSlot(Slot& slot) {
  if (slot.state != State::kDirty) return;
  std::unique_ptr<BcfFile> file = take_file();
  settle(slot, save(slot.data, slot.frame, place(), *file));
  idle_files.push_back(std::move(file));
}

// Unlocks the mutex meanwhile, and locks it again even after an exception.
BFS::Table::Saved BFS::Table::save_unlocked(Lock& lock, const SimFrame& frame, int number) {
  const Place here = place();
  std::unique_ptr<BcfFile> file = take_file();
  Saved saved;
  {
    const Unlocked unlocked(lock);
    saved = save(frame, number, here, *file);
  }
  idle_files.push_back(std::move(file));
  return saved;
}

// There are never more files than frames that are being saved.
std::unique_ptr<BcfFile> BFS::Table::take_file() {
  if (idle_files.empty()) return std::make_unique<BcfFile>();
  std::unique_ptr<BcfFile> file = std::move(idle_files.back());
  idle_files.pop_back();
  return file;
}

void BFS::Table::settle(Slot& slot, const Saved& saved) {
  bytes_written += saved.size;
  if (saved.settled) slot.state = State::kClean;
  if (saved.size > 0 && slot.substep == 0) unsaved.erase(slot.frame);
  if (saved.size == 0) last_error = saved.error;
  if (saved.size == 0 && saved.settled) lose(slot.frame, slot.substep, saved.error);
  changed.notify_all();
}

BFS::Table::Saved BFS::Table::save(const SimFrame& frame, int number, const Place& place,
                                   BcfFile& out) {
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
    saved.error = frame.write_loaded(saved.size, out, path, place.codec, place.sync).reason();
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

bool BFS::Table::finish_writes(Lock& lock) {
  changed.wait(lock, [this] {
    return std::none_of(entries.begin(), entries.end(),
                        [](const auto& entry) { return entry.second.saving; });
  });
  bool clean = true;
  for (auto& [key, slot] : entries) {
    storeSlot(slot);
    clean = clean && slot.state != State::kDirty;
  }
  return clean;
}

// The frame's slot is empty meanwhile and works as a lock: readers see no file that changes, and
// the frame in memory, if there was one, is out of date.
bool BFS::write_through(SimFrame& frame) {
  Slot& slot = *table_->open_for_storing(frame.frameTime.frame(), frame.substep);
  Table::Lock lock(table_->mutex);
  const Stopwatch watch;
  const Table::Saved saved = table_->save_unlocked(lock, frame, slot.frame);
  frame.saved = saved.size > 0;
  table_->seconds_waited += watch.seconds();
  if (!frame.saved) table_->lose(slot.frame, slot.substep, saved.error);
  if (frame.saved && slot.substep == 0) table_->unsaved.erase(slot.frame);
  lock.unlock();
  table_->give_back(slot, Table::Use::kAbandoned, true);
  return frame.saved;
}

}  // namespace nbx
