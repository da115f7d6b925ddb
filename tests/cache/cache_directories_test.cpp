#include "cache/cache_directories.h"

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
  void store_frame(const std::shared_ptr<BFS>& store, int number) {
    SlotHandle slot = SlotHandle::forStoring(store, number, 0);
    slot->frameTime = {{static_cast<double>(number), 1}, {1, 1}};
    slot->add(acquire_field({1, 1, 1}), kGridDensity, {}, {});
    slot.stored();
  }

  test::TemporaryFolder folder;
  test::LogCapture log;
  const std::string base = folder.file("base");
};

TEST_F(CacheDirectories, Resolve) {
  CacheDirData data;
  std::string dir = "before";
  EXPECT_FALSE(resolve_cache_dir(data, dir, false, base));
  ASSERT_TRUE(resolve_cache_dir(data, dir, true, base));
  EXPECT_EQ(dir, base + "/Nimbrix Caches 001/Cache 001");
  EXPECT_EQ(data, (CacheDirData{base + "/Nimbrix Caches 001", "Cache 001"}));
  EXPECT_TRUE(std::filesystem::is_directory(dir));
  EXPECT_TRUE(resolve_cache_dir(data, dir, false, base));  // as it stands

  // Another object: the next number in the same base, or a base of its own.
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
  EXPECT_TRUE(log.contains("FATAL: failed to create global cache base path "));
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

// An open store goes along with its directory, or is forgotten with it.
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

  // A copy isn't made twice, a broken one is made whole, and no file is replaced.
  const std::string first = copy->fileName(-4, 0);
  std::filesystem::remove(copy->fileName(5, 0));
  EXPECT_TRUE(store->copyFits(to + "/cache"));
  EXPECT_TRUE(store->copyDir(to, {}));
  EXPECT_EQ(copy->frames(), (std::vector<int>{-4, 5}));
  std::filesystem::copy_file(first, copy->fileName(6, 0));
  EXPECT_FALSE(store->copyFits(to + "/cache")) << "it has a frame more";
  std::filesystem::remove(copy->fileName(6, 0));
  std::filesystem::copy_file(copy->fileName(5, 0), first,
                             std::filesystem::copy_options::overwrite_existing);
  EXPECT_FALSE(store->copyFits(to + "/cache"));
  EXPECT_FALSE(store->copyDir(to, {}));
  EXPECT_TRUE(log.contains("Failed to copy file " + from + "/"));
  EXPECT_TRUE(store->copyFits(to + "/new"));
  EXPECT_TRUE(store->copyDir(to, {}, "new"));
  EXPECT_EQ(list_frames(to + "/new").size(), 2u);
  make_file(folder.path(), "file");
  EXPECT_FALSE(store->copyDir(folder.file("file"), {}));
  make_file(folder.file("other"), "cache");
  EXPECT_FALSE(store->copyDir(folder.file("other"), {}));
  EXPECT_FALSE(BFS().copyDir(to, {}));
}

}  // namespace
}  // namespace nbx
