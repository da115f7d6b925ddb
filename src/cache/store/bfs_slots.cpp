// The slots of the frame table: who may use which slot, and when a slot leaves the table.
#include <algorithm>

#include "cache/store/frame_table.h"
#include "util/log.h"
#include "util/stopwatch.h"

namespace nbx {

namespace {

constexpr std::size_t kMinSlots = 1;

// Frames from 0 upwards come first in the table, then negative ones.
std::uint64_t slot_key(int frame, int substep) {
  return std::uint64_t{static_cast<std::uint32_t>(frame)} << 32 |
         static_cast<std::uint32_t>(substep);
}

}  // namespace

// Adds a reference; never waits for room.
BFS::Slot& BFS::Table::acquire(int frame, int substep) {
  const std::uint64_t key = slot_key(frame, substep);
  auto found = entries.find(key);
  if (found == entries.end()) {
    if (entries.size() >= max_slots) {
      const auto unused = std::find_if(entries.begin(), entries.end(), [](const auto& entry) {
        return entry.second.references == 0;
      });
      if (unused == entries.end()) {
        max_slots = entries.size() + 1;
      } else {
        const bool dirty = unused->second.state == State::kDirty;
        const Stopwatch watch;
        remove(unused->second);
        if (dirty) seconds_waited += watch.seconds();
      }
    }
    found = entries.try_emplace(key, frame, substep).first;
  }
  ++found->second.references;
  return found->second;
}

void BFS::Table::release(Slot& slot, bool force) {
  if (slot.references <= 0) {
    LogMessage() << "release: trying to unlock unused frame " << slot.frame << " substep "
                 << slot.substep;
    return;
  }
  --slot.references;
  changed.notify_all();
  if (slot.references > 0 || slot.state == State::kDirty) return;
  // A table of the smallest size keeps its last frame.
  if (!force && max_slots >= entries.size() && max_slots <= kMinSlots) return;
  drop(slot);
  if (max_slots > kMinSlots) --max_slots;
}

void BFS::Table::drop(Slot& slot) {
  if (!slot.data.buffers.empty()) idle_buffers.push_back(std::move(slot.data.buffers));
  entries.erase(slot_key(slot.frame, slot.substep));
}

// Saves a slot without references if it is dirty, and drops it.
void BFS::Table::remove(Slot& slot) {
  storeSlot(slot);
  if (slot.state == State::kDirty) lose(slot.frame, slot.substep, last_error);
  drop(slot);
}

void BFS::Table::lose(int frame, int substep, const std::string& error) {
  ++frames_lost;
  lost_frames.push_back({frame, substep, error});
}

BFS::Slot* BFS::Table::open_for_reading(int frame, int substep, bool load_it, bool force) {
  Lock lock(mutex);
  if (!load_it) {
    const auto found = entries.find(slot_key(frame, substep));
    if (found == entries.end()) return nullptr;
    Slot& slot = found->second;
    if (slot.state == State::kEmpty || slot.writing) return nullptr;
    ++slot.references;
    ++slot.readers;
    return &slot;
  }
  Slot& slot = acquire(frame, substep);
  changed.wait(lock, [&] { return !slot.writing; });
  // An empty frame has no readers, so the load has the slot for itself.
  if (slot.state == State::kEmpty && !load(lock, slot)) {
    release(slot, force);
    return nullptr;
  }
  ++slot.readers;
  return &slot;
}

// Fills an empty slot from its file, with the mutex unlocked. False if there is no such frame.
bool BFS::Table::load(Lock& lock, Slot& slot) {
  slot.writing = true;
  lock.unlock();
  const auto done = [&](bool loaded) {
    lock.lock();
    slot.writing = false;
    slot.state = loaded ? State::kClean : State::kEmpty;
    changed.notify_all();
    return loaded;
  };
  std::string path;
  try {
    return done(store.frameFile(slot.frame, slot.substep, &path) && slot.data.load(path));
  } catch (const Exception& e) {
    LogMessage() << "BFS: Failed to read " << path << ": " << e.what();
    return done(false);
  } catch (...) {
    done(false);
    release(slot, false);
    throw;
  }
}

BFS::Slot* BFS::Table::open_for_storing(int frame, int substep) {
  Lock lock(mutex);
  Slot& slot = acquire(frame, substep);
  const bool saving = slot.saving;
  const Stopwatch watch;
  changed.wait(lock, [&] { return !slot.writing && slot.readers == 0; });
  if (saving) seconds_waited += watch.seconds();
  slot.writing = true;
  slot.state = State::kEmpty;
  slot.data.clear();
  // A frame that will be packed needs no copies of its fields.
  slot.data.ownsData = store.codec != Codec::kRunLength;
  if (slot.data.buffers.empty() && !idle_buffers.empty()) {
    slot.data.buffers = std::move(idle_buffers.back());
    idle_buffers.pop_back();
  }
  if (substep == 0) unsaved.insert(frame);
  return &slot;
}

void BFS::Table::give_back(Slot& slot, Use use, bool force) {
  const Lock lock(mutex);
  bool stored = use == Use::kStored;
  if (use == Use::kRead) {
    --slot.readers;
  } else {
    const int number = slot.data.frameTime.frame();
    if (stored && number != slot.frame) {
      last_error = "It was stored with the time of frame " + std::to_string(number) + ".";
      LogMessage() << "IOW: NOT writing frame " << slot.frame << ": " << last_error;
      lose(slot.frame, slot.substep, last_error);
      stored = false;
    }
    if (stored)
      slot.data.path = place().file(slot.frame, slot.substep);
    else
      slot.data.clear();
    slot.data.valid = stored;
    slot.state = stored ? State::kDirty : State::kEmpty;
    slot.writing = false;
  }
  release(slot, force);
  if (stored) start_writer();
  work = true;
  due.notify_all();
}

void BFS::Table::removeAllSlots(Lock& lock) {
  max_slots = 0;  // frames that are given back leave at once
  LogMessage() << "removing all slots";
  while (!entries.empty()) {
    const auto unused = std::find_if(entries.begin(), entries.end(),
                                     [](const auto& e) { return e.second.references == 0; });
    if (unused != entries.end())
      remove(unused->second);
    else
      changed.wait(lock);
  }
  max_slots = kMinSlots;
  changed.notify_all();
}

}  // namespace nbx
