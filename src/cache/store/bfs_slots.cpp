// The table of the frame store: who may have which slot, and when a slot leaves.
#include <algorithm>

#include "cache/bfs.h"
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

// One reference more; never waits for room.
BFS::Slot& BFS::acquire(int frame, int substep) {
  const std::uint64_t key = slot_key(frame, substep);
  auto found = slots_.find(key);
  if (found == slots_.end()) {
    if (slots_.size() >= max_slots_) {
      const auto unused = std::find_if(slots_.begin(), slots_.end(), [](const auto& entry) {
        return entry.second.references == 0;
      });
      if (unused == slots_.end()) {
        max_slots_ = slots_.size() + 1;
      } else {
        const bool dirty = unused->second.state == State::kDirty;
        const Stopwatch watch;
        remove(unused->second);
        if (dirty) seconds_waited_ += watch.seconds();
      }
    }
    found = slots_.try_emplace(key, frame, substep).first;
  }
  ++found->second.references;
  return found->second;
}

void BFS::release(Slot& slot, bool force) {
  if (slot.references <= 0) {
    LogMessage() << "release: trying to unlock unused frame " << slot.frame << " substep "
                 << slot.substep;
    return;
  }
  --slot.references;
  changed_.notify_all();
  if (slot.references > 0 || slot.state == State::kDirty) return;
  // A table of its least size keeps its last frame.
  if (!force && max_slots_ >= slots_.size() && max_slots_ <= kMinSlots) return;
  slots_.erase(slot_key(slot.frame, slot.substep));
  if (max_slots_ > kMinSlots) --max_slots_;
}

// Saves a slot without references if need be, and drops it.
void BFS::remove(Slot& slot) {
  storeSlot(slot);
  if (slot.state == State::kDirty) lose(slot.frame, slot.substep, last_error_);
  slots_.erase(slot_key(slot.frame, slot.substep));
}

void BFS::lose(int frame, int substep, const std::string& error) {
  ++frames_lost_;
  lost_frames_.push_back({frame, substep, error});
}

BFS::Slot* BFS::open_for_reading(int frame, int substep, bool load_it, bool force) {
  Lock lock(mutex_);
  if (!load_it) {
    const auto found = slots_.find(slot_key(frame, substep));
    if (found == slots_.end()) return nullptr;
    Slot& slot = found->second;
    if (slot.state == State::kEmpty || slot.writing) return nullptr;
    ++slot.references;
    ++slot.readers;
    return &slot;
  }
  Slot& slot = acquire(frame, substep);
  changed_.wait(lock, [&] { return !slot.writing; });
  // Who loads has no readers beside him: nobody reads an empty frame.
  if (slot.state == State::kEmpty && !load(lock, slot)) {
    release(slot, force);
    return nullptr;
  }
  ++slot.readers;
  return &slot;
}

// Fills an empty slot from its file, with the mutex let go. False if there is no such frame.
bool BFS::load(Lock& lock, Slot& slot) {
  slot.writing = true;
  lock.unlock();
  const auto done = [&](bool loaded) {
    lock.lock();
    slot.writing = false;
    slot.state = loaded ? State::kClean : State::kEmpty;
    changed_.notify_all();
    return loaded;
  };
  std::string path;
  try {
    return done(frameFile(slot.frame, slot.substep, &path) && slot.data.load(path));
  } catch (const Exception& e) {
    LogMessage() << "BFS: Failed to read " << path << ": " << e.what();
    return done(false);
  } catch (...) {
    done(false);
    release(slot, false);
    throw;
  }
}

BFS::Slot* BFS::open_for_storing(int frame, int substep) {
  Lock lock(mutex_);
  Slot& slot = acquire(frame, substep);
  const bool saving = slot.saving;
  const Stopwatch watch;
  changed_.wait(lock, [&] { return !slot.writing && slot.readers == 0; });
  if (saving) seconds_waited_ += watch.seconds();
  slot.writing = true;
  slot.state = State::kEmpty;
  slot.data.clear();
  return &slot;
}

void BFS::give_back(Slot& slot, bool wrote, bool stored, bool force) {
  const Lock lock(mutex_);
  if (wrote) {
    const int told = slot.data.frameTime.frame();
    if (stored && told != slot.frame) {
      last_error_ = "It was stored with the time of frame " + std::to_string(told) + ".";
      LogMessage() << "IOW: NOT writing frame " << slot.frame << ": " << last_error_;
      lose(slot.frame, slot.substep, last_error_);
      stored = false;
    }
    if (stored)
      slot.data.path = place().file(slot.frame, slot.substep);
    else
      slot.data.clear();
    slot.data.valid = stored;
    slot.state = stored ? State::kDirty : State::kEmpty;
    slot.writing = false;
  } else {
    --slot.readers;
  }
  release(slot, force);
  if (stored) start_writer();
  work_ = true;
  due_.notify_all();
}

void BFS::removeAllSlots() {
  Lock lock(mutex_);
  removeAllSlots(lock);
}

void BFS::removeAllSlots(Lock& lock) {
  max_slots_ = 0;  // frames that come back go at once
  LogMessage() << "removing all slots";
  while (!slots_.empty()) {
    const auto unused = std::find_if(slots_.begin(), slots_.end(),
                                     [](const auto& e) { return e.second.references == 0; });
    if (unused != slots_.end())
      remove(unused->second);
    else
      changed_.wait(lock);
  }
  max_slots_ = kMinSlots;
  changed_.notify_all();
}

}  // namespace nbx
