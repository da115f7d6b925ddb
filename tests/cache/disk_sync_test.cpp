// The order in which files reach the disk, which decides what a power failure can destroy.
#include "cache/disk_sync.h"

#include <array>
#include <cerrno>
#include <mutex>

#include <unistd.h>

#include "cache/bfs.h"
#include "cache/frame_bytes.h"
#include "support/support.h"
#include "util/whole_file.h"

namespace nbx {
namespace {

std::mutex mutex;
test::OnSync::Action on_sync;

int sync_instead(int descriptor) {
  std::array<char, 4096> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  if (readlink(link.c_str(), path.data(), path.size() - 1) < 0) return -1;
  std::unique_lock lock(mutex);
  const test::OnSync::Action action = on_sync;
  lock.unlock();
  errno = action ? action(path.data()) : 0;
  return errno == 0 ? 0 : -1;
}

}  // namespace

test::OnSync::OnSync(Action action) {
  const std::lock_guard lock(mutex);
  on_sync = std::move(action);
}

test::OnSync::~OnSync() {
  const std::lock_guard lock(mutex);
  on_sync = nullptr;
}

}  // namespace nbx

extern "C" __attribute__((visibility("default"))) int fdatasync(int descriptor) {
  return nbx::sync_instead(descriptor);
}
extern "C" __attribute__((visibility("default"))) int fsync(int descriptor) {
  return nbx::sync_instead(descriptor);
}

namespace nbx {
namespace {

struct Call {
  std::string path, bytes;  // the file's contents at that time; empty for a folder
  friend bool operator==(const Call&, const Call&) = default;
};

class DiskSync : public testing::Test {
 protected:
  std::vector<Call> take() { return std::exchange(calls, {}); }

  test::TemporaryFolder folder;
  test::LogCapture log;
  std::vector<Call> calls;
  std::size_t failing = 0;  // the number of the failing call, from 1 on
  int error = EIO;
  test::OnSync hook{[this](const std::string& path) {
    calls.push_back({path, std::filesystem::is_directory(path) ? "" : test::read_file(path)});
    return calls.size() == failing ? error : 0;
  }};
};

TEST_F(DiskSync, FramesAreOnTheDiskBeforeTheirVersion) {
  BFS store;
  ASSERT_TRUE(store.setDirectory(folder.path()));
  SimFrame frame;
  frame.frameTime = {{1, 25}, {1, 25}};
  frame.add(acquire_field({4, 5, 6}), kGridDensity, {}, {});
  const std::string path = store.fileName(1, 0);
  ASSERT_TRUE(store.write_through(frame));
  const std::string whole = test::read_file(path);
  std::string unfinished = whole;
  unfinished[kBcfVersionAt] = 0;
  EXPECT_EQ(take(), (std::vector<Call>{{path, unfinished}, {folder.path(), ""}, {path, whole}}));
  ASSERT_TRUE(store.write_through(frame));  // the name already exists
  EXPECT_EQ(take(), (std::vector<Call>{{path, unfinished}, {path, whole}}));
  store.sync = Sync::kNone;
  ASSERT_TRUE(store.write_through(frame));
  EXPECT_TRUE(calls.empty());

  store.sync = Sync::kDisk;
  for (failing = 1; failing <= 3; ++failing) {
    std::filesystem::remove(path);
    EXPECT_FALSE(store.write_through(frame));
    EXPECT_EQ(take().size(), failing);
    EXPECT_EQ(store.take_lost_frames().at(0).error, "Input/output error");
    EXPECT_FALSE(std::filesystem::exists(path));
  }
  EXPECT_EQ(store.frames_lost(), 3);
  failing = 1;
  error = EINVAL;  // the file can't be synced
  EXPECT_TRUE(store.write_through(frame));
}

TEST_F(DiskSync, WholeFilesTakeTheirNameWhenTheyAreThere) {
  const std::string path = folder.file("file"), part = path + ".part", link = folder.file("link");
  ASSERT_TRUE(write_whole(path, "old", Sync::kDisk));
  EXPECT_EQ(take(), (std::vector<Call>{{part, "old"}, {folder.path(), ""}}));
  failing = 1;
  EXPECT_EQ(write_whole(path, "new", Sync::kDisk).reason(), "Input/output error");
  { std::ofstream(WholeFile(path, Sync::kNone).part()) << "never committed"; }
  EXPECT_EQ(test::read_file(path), "old");
  EXPECT_FALSE(std::filesystem::exists(part));
  failing = 0;
  std::filesystem::create_symlink(path, link);
  EXPECT_TRUE(write_whole(link, "new", Sync::kNone));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(test::read_file(path), "new");
  EXPECT_EQ(write_whole(folder.file("missing/file"), "", Sync::kNone).reason(),
            "No such file or directory");
}

}  // namespace
}  // namespace nbx
