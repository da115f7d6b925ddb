#include "cache/cache_directories.h"

#include "cache/cache_notes.h"
#include "cache/cache_registry.h"
#include "cache/frame_bytes.h"
#include "cache/slot_handle.h"
#include "support/support.h"

namespace nbx {
namespace {

class CacheDirectories : public testing::Test {
 protected:
  void make_file(const std::string& dir, const std::string& name, std::size_t bytes = 0) {
    std::filesystem::create_directories(dir);
    test::write_file(dir + "/" + name, std::string(bytes, 'x'));
  }
  void put(const std::string& name, const std::string& bytes = test::header()) {
    test::write_file(folder.file(name), bytes);
  }
  void store_frame(const std::shared_ptr<BFS>& store, int number) {
    SlotHandle slot = SlotHandle::for_storing(store, number, 0);
    slot->frameTime = {{static_cast<double>(number), 1}, {1, 1}};
    slot->add(acquire_field({1, 1, 1}), kGridDensity, {}, {});
    slot.stored();
  }

  test::TemporaryFolder folder;
  test::LogCapture log;
  const std::string base = folder.file("base");
  const std::string old_prefix = "0123456789abcdef0123456789abcdef";
};

TEST_F(CacheDirectories, Resolve) {
  CacheDirData data;
  std::string dir = "before";
  EXPECT_FALSE(resolve_cache_dir(data, dir, false, base));
  ASSERT_TRUE(resolve_cache_dir(data, dir, true, base));
  EXPECT_EQ(dir, base + "/Nimbrix Caches 001/Cache 001");
  EXPECT_EQ(data, (CacheDirData{base + "/Nimbrix Caches 001", "Cache 001"}));
  EXPECT_TRUE(std::filesystem::is_directory(dir));
  EXPECT_TRUE(resolve_cache_dir(data, dir, false, base));

  // Another object gets the next number in the same base, or its own base.
  CacheDirData same{data.base, "gone"}, own, moved{folder.file("gone"), "Cache 001"};
  EXPECT_FALSE(resolve_cache_dir(same, dir, false, base));
  EXPECT_TRUE(resolve_cache_dir(same, dir, true, base));
  EXPECT_EQ(dir, data.base + "/Cache 002");
  EXPECT_TRUE(resolve_cache_dir(own, dir, true, base));
  EXPECT_EQ(dir, base + "/Nimbrix Caches 002/Cache 001");
  EXPECT_TRUE(resolve_cache_dir(moved, dir, true, base));
  EXPECT_EQ(moved.base, base + "/Nimbrix Caches 003");

  make_file(folder.path(), "file");
  CacheDirData blocked;
  dir = "before";
  EXPECT_FALSE(resolve_cache_dir(blocked, dir, true, folder.file("file/below")));
  EXPECT_EQ(blocked, CacheDirData());
  EXPECT_EQ(dir, "before");
}

TEST_F(CacheDirectories, LockListAndRemove) {
  make_file(base + "/b", "1.bcf", 1000);
  make_file(base + "/b", "2.bcf", 500);
  make_file(base + "/b", "Autosave.c4d", 9);
  make_file(base + "/b", "LastSimState.json", 9);
  make_file(base + "/a", "LastSimState.bcf");
  make_file(base + "/without", "frame.txt");
  EXPECT_EQ(list_caches(base), (std::vector<CacheListEntry>{{"a", 0}, {"b", 1500}}));
  EXPECT_TRUE(list_caches(folder.file("missing")).empty());

  EXPECT_FALSE(cache_locked(base + "/b"));
  EXPECT_TRUE(set_cache_lock(base + "/b", false));
  EXPECT_TRUE(set_cache_lock(base + "/b", true));
  EXPECT_TRUE(cache_locked(base + "/b"));
  EXPECT_FALSE(remove_cache({base, "b"}));
  EXPECT_TRUE(std::filesystem::exists(base + "/b/1.bcf"));
  EXPECT_TRUE(set_cache_lock(base + "/b", false));
  EXPECT_FALSE(cache_locked(base + "/b"));
  EXPECT_FALSE(set_cache_lock(folder.file("missing"), true));

  EXPECT_TRUE(remove_cache({base, "b"}));
  EXPECT_FALSE(std::filesystem::exists(base + "/b"));
  for (const char* wrong : {"", ".", "..", "missing", "../base/a", "without"})
    EXPECT_FALSE(remove_cache({base, wrong})) << wrong;
  EXPECT_TRUE(std::filesystem::exists(base + "/a/LastSimState.bcf"));
  EXPECT_TRUE(std::filesystem::exists(base + "/without/frame.txt"));
}

TEST_F(CacheDirectories, ANewCacheGetsTheNextNumberBesideAnother) {
  for (const char* other : {"fire.log.cache", "fire.log.001", "fire.log.12", "plain"}) {
    std::filesystem::create_directories(base + "/" + other);
    const std::string made = make_cache_beside(base + "/" + other);
    const std::string stem = std::string(other).starts_with("plain") ? "plain" : "fire.log";
    EXPECT_TRUE(std::filesystem::is_directory(made)) << made;
    EXPECT_EQ(made, base + "/" +
                        (std::string(other) == "fire.log.cache" ? stem + ".001"
                         : std::string(other) == "fire.log.001" ? stem + ".002"
                         : std::string(other) == "fire.log.12"  ? stem + ".12.001"
                                                                : stem + ".001"));
  }
  EXPECT_EQ(make_cache_beside(folder.file("missing/a")), "");
}

TEST_F(CacheDirectories, NotesKeepTheRunsWhoseFramesCount) {
  CacheNotes notes;
  for (const int first : {0, 10, 20})
    notes.begin({first, "v" + std::to_string(first), 1.5 * first, first});
  notes.origin = CacheOrigin{"a", 15};
  ASSERT_TRUE(write_cache_notes(folder.path(), notes));
  notes = read_cache_notes(folder.path());
  EXPECT_EQ(notes.runs,
            (std::vector<RunNote>{{0, "v0"}, {10, "v10", 15, 10}, {20, "v20", 30, 20}}));
  EXPECT_EQ(notes.origin, (CacheOrigin{"a", 15}));
  notes.begin({10, "new"});
  EXPECT_EQ(notes.runs, (std::vector<RunNote>{{0, "v0"}, {10, "new"}}));
  EXPECT_EQ(notes.origin, (CacheOrigin{"a", 9})) << "the run replaces the frames from 10 on";
  notes.begin({0, "all"});
  EXPECT_EQ(notes.runs, (std::vector<RunNote>{{0, "all"}}));
  EXPECT_FALSE(notes.origin);
  put("CacheNotes.json", "{}");
  EXPECT_TRUE(read_cache_notes(folder.path()).runs.empty());
  EXPECT_TRUE(foreign_files(folder.path()).empty());
  put("CacheLock.lck", "");
  put("mine.txt", "");
  std::filesystem::create_directories(folder.file("sub"));
  EXPECT_EQ(foreign_files(folder.path()), (std::vector<std::string>{"mine.txt", "sub"}));
}

// An open store follows its renamed directory, and is forgotten with a removed one.
TEST_F(CacheDirectories, OpenCachesGiveWay) {
  std::filesystem::create_directories(base + "/old");
  const std::shared_ptr<BFS> store = getCache(base + "/old");
  store_frame(store, 1);
  CacheDirData data{base, "old"};
  EXPECT_FALSE(rename_cache(data, "../elsewhere"));
  make_file(base + "/taken", "file");
  EXPECT_FALSE(rename_cache(data, "taken"));
  EXPECT_EQ(data.name, "old");
  ASSERT_TRUE(rename_cache(data, "new"));
  EXPECT_EQ(data.name, "new");
  EXPECT_EQ(store->directory(), base + "/new");
  EXPECT_EQ(getCache(base + "/new"), store);
  EXPECT_FALSE(CacheRegistry::instance().find(base + "/old"));
  EXPECT_TRUE(SlotHandle(store, 1, 0, true));  // under the prefix that its file has

  store_frame(store, 2);
  EXPECT_TRUE(remove_cache(data));
  EXPECT_FALSE(std::filesystem::exists(base + "/new"));
  EXPECT_FALSE(CacheRegistry::instance().find(base + "/new"));
}

TEST_F(CacheDirectories, Copies) {
  const std::string from = base + "/cache", to = folder.file("deep/project");
  std::filesystem::create_directories(from);
  const std::shared_ptr<BFS> store = getCache(from);
  store_frame(store, -4);
  store_frame(store, 5);
  make_file(from, "LastSimState.bcf", 3);
  make_file(from, "LastSimState.json", 3);
  make_file(from, "CacheLock.lck");
  std::vector<std::pair<int, int>> told;
  ASSERT_TRUE(store->copyDir(to, [&](int done, int all) { told.emplace_back(done, all); }));
  EXPECT_EQ(told, (std::vector<std::pair<int, int>>{{0, 4}, {1, 4}, {2, 4}, {3, 4}, {4, 4}}));
  const std::shared_ptr<BFS> copy = getCache(to + "/cache");
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->prefix(), cache_prefix(to + "/cache"));
  EXPECT_EQ(copy->frames(), (std::vector<int>{-4, 5}));
  EXPECT_TRUE(SlotHandle(copy, -4, 0, true));
  EXPECT_TRUE(std::filesystem::exists(to + "/cache/LastSimState.bcf"));
  EXPECT_TRUE(std::filesystem::exists(to + "/cache/LastSimState.json"));
  EXPECT_FALSE(cache_locked(to + "/cache"));

  // A copy isn't made twice, a partial one is completed, and no file is replaced.
  const std::string first = copy->fileName(-4, 0);
  std::filesystem::remove(copy->fileName(5, 0));
  EXPECT_TRUE(store->copy_fits(to + "/cache"));
  EXPECT_TRUE(store->copyDir(to, {}));
  EXPECT_EQ(copy->frames(), (std::vector<int>{-4, 5}));
  std::filesystem::copy_file(first, copy->fileName(6, 0));
  EXPECT_FALSE(store->copy_fits(to + "/cache")) << "it has a frame more";
  std::filesystem::remove(copy->fileName(6, 0));
  std::filesystem::copy_file(copy->fileName(5, 0), first,
                             std::filesystem::copy_options::overwrite_existing);
  EXPECT_FALSE(store->copy_fits(to + "/cache"));
  EXPECT_FALSE(store->copyDir(to, {}));
  EXPECT_TRUE(store->copy_fits(to + "/new"));
  EXPECT_TRUE(store->copyDir(to, {}, "new"));
  EXPECT_EQ(list_frames(to + "/new").size(), 2u);
  make_file(folder.path(), "file");
  EXPECT_FALSE(store->copyDir(folder.file("file"), {}));
}

TEST_F(CacheDirectories, FileNames) {
  EXPECT_EQ(frame_file_name("p", 7, 0), "pnbx_sim_cache_0000000007.bcf");
  EXPECT_EQ(frame_file_name("p", -5, 0), "pnbx_sim_cache_-000000005.bcf");
  EXPECT_EQ(frame_file_name("p", -5, -1), "pnbx_sim_cache_-000000005.bcf");
  EXPECT_EQ(frame_file_name("p", 1234567890, 12), "pnbx_sim_cache_1234567890_12.bcf");
  for (const int frame : {0, -1, 42, 2147483647, -2147483647 - 1})
    EXPECT_EQ(frame_of_name(frame_file_name("x_1", frame, 0)), frame);
  for (const char* other : {"0000000001_2.bcf", "99999999999.bcf", "1.bcf.part", ".bcf", "+1.bcf"})
    EXPECT_FALSE(frame_of_name(std::string("nbx_sim_cache_") + other)) << other;
}

// The hash of the path without its leading slash, computed by another program.
TEST_F(CacheDirectories, PrefixOfANewDirectoryIsTheHashOfItsPath) {
  EXPECT_EQ(cache_prefix("/a/b"), "a7e86136543b019d72468ceebf71fb8e");
  EXPECT_EQ(cache_prefix("/a/x/../b/"), cache_prefix("/a/b"));

  BFS cache;
  EXPECT_FALSE(cache.setDirectory(folder.file("missing")));
  EXPECT_FALSE(cache.setDirectory(""));
  ASSERT_TRUE(cache.setDirectory(folder.path()));
  const std::string prefix = cache_prefix(folder.path());
  EXPECT_EQ(cache.fileName(3, 0), folder.file(prefix + "nbx_sim_cache_0000000003.bcf"));
}

TEST_F(CacheDirectories, PrefixIsThatOfTheFilesThatAreThere) {
  const std::string own = cache_prefix(folder.path());
  put("LastSimState.bcf");
  put("nbx_sim_cache_0000000001.bcf");
  put("nbx_a_long_name_that_begins_like_a_frame_does.bcf");
  EXPECT_EQ(cache_prefix(folder.path()), own);
  put(std::string(40, '0') + ".bcf");  // sorts before the next one
  EXPECT_EQ(cache_prefix(folder.path()), std::string(32, '0'));
  put(old_prefix + "nbx_sim_cache_0000000001.bcf");
  EXPECT_EQ(cache_prefix(folder.path()), old_prefix);
}

TEST_F(CacheDirectories, FindsFrames) {
  for (const char* number : {"0000000010", "-000000002", "0000000009", "0000000009_1"})
    put(old_prefix + "nbx_sim_cache_" + number + ".bcf");
  put(old_prefix + "nbx_sim_cache_0000000004.bcf", "not a frame");
  put("LastSimState.bcf");
  BFS cache;
  ASSERT_TRUE(cache.setDirectory(folder.path()));
  EXPECT_EQ(cache.frames(), (std::vector<int>{-2, 4, 9, 10}));
  std::string path;
  EXPECT_TRUE(cache.frameFile(-2, 0, &path));
  EXPECT_EQ(path, folder.file(old_prefix + "nbx_sim_cache_-000000002.bcf"));
  EXPECT_TRUE(cache.frameFile(9, 1, nullptr));
  EXPECT_FALSE(cache.frameFile(9, 2, nullptr));
  EXPECT_FALSE(cache.frameFile(4, 0, nullptr));
}

}  // namespace
}  // namespace nbx
