#include "cache/bfs.h"

#include "cache/frame_bytes.h"
#include "support/support.h"

namespace nbx {
namespace {

class BfsTest : public testing::Test {
 protected:
  void put(const std::string& name, const std::string& bytes = test::header()) {
    test::write_file(folder.file(name), bytes);
  }

  test::TemporaryFolder folder;
  test::LogCapture log;
  const std::string old_prefix = "0123456789abcdef0123456789abcdef";
};

TEST_F(BfsTest, FileNames) {
  EXPECT_EQ(frame_file_name("p", 7, 0), "pnbx_sim_cache_0000000007.bcf");
  EXPECT_EQ(frame_file_name("p", -5, 0), "pnbx_sim_cache_-000000005.bcf");
  EXPECT_EQ(frame_file_name("p", -5, -1), "pnbx_sim_cache_-000000005.bcf");
  EXPECT_EQ(frame_file_name("p", 1234567890, 12), "pnbx_sim_cache_1234567890_12.bcf");
  for (const int frame : {0, -1, 42, 2147483647, -2147483647 - 1})
    EXPECT_EQ(frame_of_name(frame_file_name("x_1", frame, 0)), frame);
  for (const char* other : {"0000000001_2.bcf", "99999999999.bcf", "1.bcf.part", ".bcf", "+1.bcf"})
    EXPECT_FALSE(frame_of_name(std::string("nbx_sim_cache_") + other)) << other;
}

// The hash is that of the path without its leading slash, taken with another program.
TEST_F(BfsTest, PrefixOfANewDirectoryIsTheHashOfItsPath) {
  EXPECT_EQ(cache_prefix("/a/b"), "a7e86136543b019d72468ceebf71fb8e");
  EXPECT_EQ(cache_prefix("/a/x/../b/"), cache_prefix("/a/b"));

  BFS cache;
  EXPECT_FALSE(cache.setDirectory(folder.file("missing")));
  EXPECT_FALSE(cache.setDirectory(""));
  ASSERT_TRUE(cache.setDirectory(folder.path()));
  const std::string prefix = cache_prefix(folder.path());
  EXPECT_TRUE(log.contains("Using cache directory " + folder.path() + " prefix " + prefix));
  EXPECT_EQ(cache.fileName(3, 0), folder.file(prefix + "nbx_sim_cache_0000000003.bcf"));
}

TEST_F(BfsTest, PrefixIsThatOfTheFilesThatAreThere) {
  const std::string own = cache_prefix(folder.path());
  put("LastSimState.bcf");
  put("nbx_sim_cache_0000000001.bcf");
  put("nbx_a_long_name_that_begins_like_a_frame_does.bcf");
  EXPECT_EQ(cache_prefix(folder.path()), own);
  put(std::string(40, '0') + ".bcf");  // stands before the next in the order of names
  EXPECT_EQ(cache_prefix(folder.path()), std::string(32, '0'));
  put(old_prefix + "nbx_sim_cache_0000000001.bcf");
  EXPECT_EQ(cache_prefix(folder.path()), old_prefix);
}

TEST_F(BfsTest, FindsFrames) {
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

TEST_F(BfsTest, WriteThrough) {
  const std::string path = folder.file("cache");
  std::filesystem::create_directory(path);
  BFS cache;
  ASSERT_TRUE(cache.setDirectory(path));
  SimFrame frame;
  frame.frameTime = {{-3, 25}, {1, 25}};
  const FieldHandle field = acquire_field({4, 5, 6});
  test::fill_random(*field, 1);
  frame.add(field, kGridDensity, {}, {});
  EXPECT_TRUE(cache.writeThrough(frame));
  EXPECT_TRUE(frame.saved);
  EXPECT_EQ(cache.frames(), std::vector<int>{-3});
  EXPECT_TRUE(log.contains("wrote frame -3(0.71KB) in "));  // 12 + 222 + 4 + 480 + 4 bytes

  // The ways in which writing fails are those of the writer; here the caller is told.
  frame.substep = 2;
  std::filesystem::create_directory(cache.fileName(-3, 2));
  EXPECT_FALSE(cache.writeThrough(frame));
  EXPECT_FALSE(frame.saved);
  EXPECT_TRUE(log.contains("IOW: Failed to write file " + cache.fileName(-3, 2)));
  EXPECT_FALSE(cache.lastError().empty());
  std::filesystem::remove_all(path);
  EXPECT_FALSE(cache.writeThrough(frame));
  EXPECT_NE(cache.lastError().find(path), std::string::npos);
}

}  // namespace
}  // namespace nbx
