// The frame store with its handles and its writer.
#include <chrono>
#include <thread>

#include <sys/inotify.h>
#include <unistd.h>

#include "cache/cache_registry.h"
#include "cache/disk_sync.h"
#include "cache/frame_bytes.h"
#include "cache/slot_handle.h"
#include "math/field_reductions.h"
#include "support/support.h"
#include "util/stopwatch.h"

namespace nbx {
namespace {

// Fills a frame with one value.
void fill(SimFrame& frame, int number, float value, int type = kGridDensity) {
  frame.frameTime = {normalize({static_cast<double>(number), 25}), {1, 25}};
  const FieldHandle field = acquire_field({9, 8, 7});
  std::fill_n(field->data(), field->count(), value);
  frame.add(field, type, {}, {});
}

// The value of a frame; -1 if the cells differ.
float value_of(SimFrame& frame) {
  const FieldHandle field = frame.grid(kGridDensity);
  if (!field || field->count() == 0) return -1;
  return min(*field) == max(*field) ? max(*field) : -1;
}

class FrameStore : public testing::Test {
 protected:
  FrameStore() {
    std::filesystem::create_directory(path);
    store->setDirectory(path);
  }
  void put(int number, float value, int substep = 0) {
    SlotHandle slot = SlotHandle::for_storing(store, number, substep);
    fill(*slot, number, value);
    slot.stored();
  }
  // Stores frames that are all held before the first one is stored.
  void put_together(std::initializer_list<int> numbers) {
    std::vector<SlotHandle> slots;
    for (const int n : numbers)
      fill(*slots.emplace_back(SlotHandle::for_storing(store, n, 0)), n, static_cast<float>(n));
    for (SlotHandle& slot : slots) slot.stored();
  }
  float read(int number, int substep = 0, bool force = false) {
    const SlotHandle slot(store, number, substep, true, force);
    return slot ? value_of(*slot) : 0;
  }
  bool in_memory(int number) { return static_cast<bool>(SlotHandle(store, number, 0, false)); }
  bool on_disk(int number, int substep = 0) {
    return std::filesystem::exists(store->fileName(number, substep));
  }
  // Puts frames on disk and out of memory.
  void prepare(std::initializer_list<int> numbers) {
    for (const int n : numbers) put(n, static_cast<float>(n));
    store->removeAllSlots();
  }

  test::TemporaryFolder folder;
  test::LogCapture log;
  const std::string path = folder.file("cache");
  std::shared_ptr<BFS> store = std::make_shared<BFS>();
};

// A frame is never written to another frame's file.
TEST_F(FrameStore, AFrameWithAnotherFramesTimeIsLost) {
  prepare({4});
  SlotHandle slot = SlotHandle::for_storing(store, 5, 0);
  fill(*slot, 4, 7);
  slot.stored();
  EXPECT_FALSE(in_memory(5));
  EXPECT_TRUE(store->finish_writes());
  EXPECT_FALSE(on_disk(5));
  EXPECT_EQ(read(4), 4);
  const std::vector<LostFrame> lost = store->take_lost_frames();
  ASSERT_EQ(lost.size(), 1u);
  EXPECT_EQ(lost[0].frame, 5);
  EXPECT_EQ(lost[0].error, "It was stored with the time of frame 4.");
}

TEST_F(FrameStore, StoredFramesReachTheDiskAndComeBack) {
  put(3, 30);
  put(-1, 10);
  put(70000, 7);  // more than 16 bits, as is the substep
  put(4464, 44);  // the same low 16 bits
  put(3, 31, 65536 + 2);
  EXPECT_TRUE(store->finish_writes());
  std::uint64_t bytes = 0;
  for (const auto& file : std::filesystem::directory_iterator(path)) bytes += file.file_size();
  EXPECT_EQ(store->bytesWritten(), bytes);
  EXPECT_EQ(store->frames(), (std::vector<int>{-1, 3, 4464, 70000}));
  EXPECT_TRUE(on_disk(3, 65536 + 2));
  EXPECT_EQ(log.count("wrote frame "), 5);
  for (const auto& [number, value] : {std::pair{3, 30.0f}, {-1, 10.0f}, {70000, 7.0f}, {4464, 44}})
    EXPECT_EQ(read(number), value);
  EXPECT_EQ(read(3, 65536 + 2), 31);
  EXPECT_EQ(read(3, 2), 0);
  EXPECT_EQ(store->frames_lost(), 0);
  store->recount_bytes(3);
  EXPECT_EQ(store->bytesWritten(), std::filesystem::file_size(store->fileName(3, 0)) +
                                       std::filesystem::file_size(store->fileName(-1, 0)));
}

// Frames wait as run-length payloads, in buffers that the next ones use again. Other codecs take
// longer, so their frames wait as copies.
TEST_F(FrameStore, WaitingFramesTakeLittleMemory) {
  const auto fields = [] { return field_pool().counts().in_use; };
  for (const Codec codec : {Codec::kRunLength, Codec::kPredictive}) {
    store->codec = codec;
    store->removeAllSlots();
    const std::size_t before = fields();
    SlotHandle slot = SlotHandle::for_storing(store, 1, 0);
    EXPECT_EQ(slot->ownsData, codec == Codec::kPredictive);
    fill(*slot, 1, 10);
    slot.stored();
    EXPECT_TRUE(codec != Codec::kRunLength || fields() == before);
    EXPECT_EQ(read(1), 10);
  }
  store->removeAllSlots();
  store->codec = Codec::kRunLength;
  EXPECT_EQ(SlotHandle::for_storing(store, 2, 0)->buffers.size(), 1u);
}

TEST_F(FrameStore, KeepsOneFrameAndGrowsWhileAllAreHeld) {
  prepare({1, 2, 3});
  EXPECT_EQ(read(1), 1);
  EXPECT_TRUE(in_memory(1));
  EXPECT_EQ(read(2), 2);
  EXPECT_FALSE(in_memory(1));
  EXPECT_TRUE(in_memory(2));
  EXPECT_EQ(read(2, 0, true), 2);
  EXPECT_FALSE(in_memory(2));

  // A missing frame leaves nothing in memory, and is looked for again.
  EXPECT_EQ(read(9), 0);
  EXPECT_FALSE(in_memory(9));
  std::filesystem::copy(store->fileName(3, 0), store->fileName(9, 0));
  EXPECT_EQ(read(9), 3);

  SlotHandle first(store, 1, 0, true);
  {
    const SlotHandle second(store, 2, 0, true);
    EXPECT_TRUE(in_memory(1) && in_memory(2));
  }
  EXPECT_FALSE(in_memory(2));  // above the capacity again
  put(4, 4);
  EXPECT_TRUE(in_memory(1));
  first.release();
  EXPECT_TRUE(store->finish_writes());
  EXPECT_EQ(read(3), 3);
  EXPECT_TRUE(in_memory(3));
  EXPECT_FALSE(in_memory(1));
}

TEST_F(FrameStore, StoringAnewReplacesTheFrame) {
  {
    SlotHandle slot = SlotHandle::for_storing(store, 1, 0);
    fill(*slot, 1, 1);
    fill(*slot, 1, 1, kGridFuel);
    slot.stored();
  }
  put(1, 2);
  store->removeAllSlots();
  SlotHandle slot(store, 1, 0, true);
  EXPECT_EQ(value_of(*slot), 2);
  EXPECT_EQ(slot->grids.size(), 1u);
  SlotHandle moved = std::move(slot);
  EXPECT_FALSE(slot);
  moved.release();

  // An incomplete store leaves the old file, and no frame in memory.
  {
    const SlotHandle half = SlotHandle::for_storing(store, 1, 0);
    fill(*half, 1, 3);
    EXPECT_FALSE(in_memory(1));
  }
  EXPECT_FALSE(in_memory(1));
  EXPECT_EQ(read(1), 2);
}

// The writer skips a frame that is being stored, and saves it later.
TEST_F(FrameStore, OnlyTheFrameItselfIsWaitedFor) {
  prepare({1, 2});
  SlotHandle storing = SlotHandle::for_storing(store, 1, 0);
  put(3, 3);
  while (!on_disk(3)) std::this_thread::yield();
  EXPECT_EQ(read(2), 2);
  std::atomic<float> got = 0;
  std::thread reader([&] { got = read(1); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(got, 0);
  fill(*storing, 1, 11);
  storing.stored();
  reader.join();
  EXPECT_EQ(got, 11);
  EXPECT_TRUE(store->finish_writes());
  SimFrame file;
  ASSERT_TRUE(file.load(store->fileName(1, 0)));
  EXPECT_EQ(value_of(file), 11);
}

// Readers load grids on demand, so the file must not change before that.
TEST_F(FrameStore, WriteThroughWaitsForReaders) {
  prepare({1});
  SlotHandle reader(store, 1, 0, true);
  std::atomic<bool> written = false;
  std::thread writer([&] {
    SimFrame frame;
    fill(frame, 1, 11);
    written = store->write_through(frame);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(written);
  EXPECT_EQ(value_of(*reader), 1);
  reader.release();
  writer.join();
  EXPECT_TRUE(written);
  EXPECT_EQ(read(1), 11);
}

// One load opens the file twice: to check its header, and to read it.
TEST_F(FrameStore, ReadersShareOneLoad) {
  prepare({1});
  const int watch = inotify_init1(IN_NONBLOCK);
  ASSERT_GE(inotify_add_watch(watch, store->fileName(1, 0).c_str(), IN_OPEN | IN_CLOSE), 0);
  std::vector<std::thread> readers;
  std::vector<SlotHandle> handles(4);
  for (SlotHandle& handle : handles)
    readers.emplace_back([&] { handle = SlotHandle(store, 1, 0, true); });
  for (std::thread& reader : readers) reader.join();
  char events[64 * sizeof(inotify_event)];
  const ssize_t read = ::read(watch, events, sizeof events);
  close(watch);
  EXPECT_EQ(read, static_cast<ssize_t>(4 * sizeof(inotify_event)));
  for (const SlotHandle& handle : handles) EXPECT_EQ(value_of(*handle), 1);
}

// While the writer is busy, a store into a full table saves the first frame that nobody uses, and
// only that.
TEST_F(FrameStore, TheFirstUnusedFrameMakesRoom) {
  test::HeldSync writer(store->fileName(0, 0));
  put(0, 1);
  writer.wait();
  put_together({3, 1, 2});
  put(9, 9);
  EXPECT_EQ(store->frames(), (std::vector<int>{0, 1}));
  EXPECT_TRUE(in_memory(0) && in_memory(2) && in_memory(3) && !in_memory(1));
  writer.release();
  EXPECT_TRUE(store->finish_writes());
  EXPECT_EQ(store->frames(), (std::vector<int>{0, 1, 2, 3, 9}));
}

// The writer is idle when the reader comes.
TEST_F(FrameStore, AFrameThatFailedIsTriedAgainWhenAReaderGoes) {
  const auto comes = [](const auto& what) {
    const Stopwatch watch;
    while (!what() && watch.seconds() < 30) std::this_thread::yield();
    return what();
  };
  test::HeldSync writer(store->fileName(1, 0));
  put(1, 1);
  writer.wait();
  store->codec = static_cast<Codec>(9);
  put(2, 2);
  writer.release();
  ASSERT_TRUE(comes([&] { return log.contains("BFS::storeSlot: Unknown codec"); }));
  store->codec = Codec::kRaw;
  SlotHandle(store, 2, 0, false).release();
  EXPECT_TRUE(comes([&] { return on_disk(2); }));
}

// An unknown codec fails in the writer and leaves the frames dirty until the codec is valid.
TEST_F(FrameStore, DirtyFramesAreSavedBeforeTheStoreEnds) {
  store->codec = static_cast<Codec>(9);
  const SlotHandle empty(store, 77, 0, true);  // doesn't keep the store
  put_together({1, 2, 3});
  EXPECT_EQ(store->finish_writes().reason(), "Unknown codec");
  EXPECT_EQ(store->frames_lost(), 0);
  for (int n = 1; n <= 3; ++n) EXPECT_TRUE(in_memory(n) && !on_disk(n));

  store->codec = Codec::kPredictive;
  store.reset();
  EXPECT_EQ(list_frames(path).size(), 3u);
}

TEST_F(FrameStore, FramesThatCanNotBeWrittenAreGivenUp) {
  std::filesystem::create_directory(store->fileName(1, 0));  // where the file should go
  put(1, 1);
  EXPECT_TRUE(store->finish_writes());
  EXPECT_EQ(store->frames_lost(), 1);

  std::filesystem::remove_all(path);
  put(-2, 2);
  put(3, 3);
  EXPECT_TRUE(store->finish_writes());
  EXPECT_EQ(store->frames_lost(), 3);
  EXPECT_NE(store->take_lost_frames().back().error.find(path), std::string::npos);
  store->codec = static_cast<Codec>(9);
  std::filesystem::create_directory(path);
  put(4, 4);
  put(5, 5);
  store->removeAllSlots();
  EXPECT_EQ(store->frames_lost(), 5);

  // Another directory gets no frame of the old one.
  store->codec = Codec::kRaw;
  put(6, 6);
  ASSERT_TRUE(store->setDirectory(folder.path()));
  EXPECT_EQ(list_frames(path).size(), 1u);
  EXPECT_TRUE(store->frames().empty());
  EXPECT_EQ(store->frames_lost(), 0);
}

TEST_F(FrameStore, RegistryHasOneStoreForADirectory) {
  store = getCache(path);
  ASSERT_TRUE(store);
  EXPECT_EQ(getCache(path + "/../cache/"), store);
  EXPECT_EQ(CacheRegistry::instance().find(path), store);
  EXPECT_FALSE(getCache(folder.file("missing")));
  EXPECT_FALSE(getCache(""));
  for (int n = 1; n <= 10; ++n) put(n, static_cast<float>(n));
  EXPECT_TRUE(store->finish_writes());
  test::HeldSync writer(store->fileName(11, 0));
  put(11, 11);
  writer.wait();
  // A handle owns the store too. Opening the store again waits for the writer, and finds all
  // frames.
  SlotHandle last(store, 1, 0, true);
  store.reset();
  EXPECT_TRUE(CacheRegistry::instance().find(path));
  std::thread end([&] { last.release(); });
  std::thread later([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    writer.release();
  });
  // A handle that find() returns may be the last one. It then waits for the writer here.
  while (CacheRegistry::instance().find(path)) std::this_thread::yield();
  store = getCache(path);
  EXPECT_EQ(log.count("Deleting Cache object for " + path), 1);
  EXPECT_EQ(store->frames().size(), 11u);
  later.join();
  end.join();
}

// Three frames are stored again and again in rising versions, while they are read, evicted and
// flushed. Every frame that a reader sees is complete, and no reader sees an older version after a
// newer one.
TEST_F(FrameStore, ReadersWritersAndEvictionTogether) {
  constexpr int kVersions = 60, kFrames = 3;
  std::atomic<int> last_version[kFrames] = {};
  prepare({0, 1, 2});
  std::atomic<int> torn = 0, back = 0, seen = 0;
  std::vector<std::thread> threads;
  for (int n = 0; n < kFrames; ++n)
    threads.emplace_back([&, n] {
      for (int v = 1; v <= kVersions; ++v) {
        put(n, static_cast<float>(n + kFrames * v));
        last_version[n] = v;
      }
    });
  std::atomic<bool> stop = false;
  for (int r = 0; r < 2; ++r)
    threads.emplace_back([&, r] {
      float latest[kFrames] = {};
      for (int i = r; !stop; ++i) {
        const int n = i % kFrames;
        const SlotHandle slot(store, n, 0, i % 5 != 0, i % 2 == 0);
        if (!slot) continue;
        ++seen;
        const float value = value_of(*slot);
        torn += value < 0 || static_cast<int>(value) % kFrames != n;
        back += value < latest[n];
        latest[n] = value;
      }
    });
  for (int i = 0; i < 10; ++i) {
    EXPECT_TRUE(i % 2 == 0 || store->finish_writes());
    if (i % 2 == 0) store->removeAllSlots();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  for (int n = 0; n < kFrames; ++n) threads[n].join();
  while (seen < 20) std::this_thread::yield();
  stop = true;
  for (std::size_t t = kFrames; t < threads.size(); ++t) threads[t].join();
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(back, 0);
  store->removeAllSlots();
  for (int n = 0; n < kFrames; ++n)
    EXPECT_EQ(read(n), static_cast<float>(n + kFrames * last_version[n]));
  EXPECT_EQ(store->frames_lost(), 0);
}

}  // namespace
}  // namespace nbx
