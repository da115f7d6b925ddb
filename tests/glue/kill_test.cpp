// Runs of the program that are killed, at every kind of moment: what was finished is whole, and
// what wasn't is never taken for a frame.
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cache/cache_info.h"
#include "cache/cache_registry.h"
#include "cache/frame_names.h"
#include "cache/slot_handle.h"
#include "support/support.h"

namespace nbx {
namespace {

pid_t start(const std::string& cache) {
  const pid_t child = fork();
  if (child != 0) return child;
  const int nowhere = open("/dev/null", O_RDWR);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  execl(NBX_PROGRAM, "nimbrix", "simulate", NBX_SCENES "/first_smoke.json", "--frames", "0-40",
        "--set", "*.voxel_size=0.5", "--set", "*.cache_velocity=true", "--log-file", "/dev/null",
        "--overwrite", "--cache", cache.c_str(), nullptr);
  _exit(127);
}

TEST(Kill, FinishedFramesAreWholeAndTheUnfinishedOneIsFound) {
  int finished = 0, unfinished = 0;
  for (int i = 0; i < 50; ++i) {
    const test::TemporaryFolder folder;
    const std::string cache = folder.file("cache");
    const pid_t child = start(cache);
    // Most often right after a file has appeared, while it is being filled; else anywhere.
    const auto frames = static_cast<std::size_t>(1 + i % 4);
    int status = 0;
    while (list_frames(cache).size() < frames && waitpid(child, &status, WNOHANG) == 0)
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    std::this_thread::sleep_for(std::chrono::milliseconds(i % 3 == 0 ? 3 * i : 0));
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the run ended before it was killed";

    const auto store = getCache(cache);
    ASSERT_TRUE(store);
    int bad = 0;
    for (const auto& [number, name] : list_frames(cache)) {
      const bool good = read_frame_file_info(cache + "/" + name, true).good();
      ++(good ? finished : unfinished);
      bad += !good;
      SlotHandle slot(store, number, 0, true);
      EXPECT_EQ(static_cast<bool>(slot), good) << name;
      if (slot) {
        EXPECT_EQ(slot->grids.size(), 5u);
        EXPECT_TRUE(slot->grid(kGridVelocityZ));
      }
    }
    EXPECT_LE(bad, 2);  // the writer's, and one that the run saves in its way
  }
  EXPECT_GT(finished, 10);
  EXPECT_GT(unfinished, 10) << "no kill hit the writer: the test tests nothing";
}

}  // namespace
}  // namespace nbx
