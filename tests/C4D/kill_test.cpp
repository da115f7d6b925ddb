// Runs of the program that are killed, at every kind of moment: what was finished is whole, and
// what wasn't is never taken for a frame.
#include <algorithm>
#include <csignal>
#include <functional>
#include <set>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cache/cache_info.h"
#include "cache/cache_registry.h"
#include "cache/frame_names.h"
#include "cache/slot_handle.h"
#include "cache/stale_frames.h"
#include "support/support.h"

namespace nbx {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

pid_t start(const std::string& cache, const Words& words) {
  Words all{"nimbrix",   "simulate", NBX_SCENES "/first_smoke.json", "--log-file",
            "/dev/null", "--set",    "*.cache_velocity=true",        "--overwrite",
            "--cache",   cache};
  all.insert(all.end(), words.begin(), words.end());
  std::vector<char*> arguments;
  for (std::string& word : all) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const pid_t child = fork();
  if (child != 0) return child;
  const int nowhere = open("/dev/null", O_RDWR);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  execv(NBX_PROGRAM, arguments.data());
  _exit(127);
}

bool run_to_end(const std::string& cache, const Words& words) {
  int status = 0;
  waitpid(start(cache, words), &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Kills a run `delay` after what is waited for has come.
void kill_run(pid_t child, const std::function<bool()>& come, std::chrono::microseconds delay) {
  int status = 0;
  while (!come() && waitpid(child, &status, WNOHANG) == 0)
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  std::this_thread::sleep_for(delay);
  kill(child, SIGKILL);
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status)) << "the run ended before it was killed";
}

TEST(Kill, FinishedFramesAreWholeAndTheUnfinishedOneIsFound) {
  int finished = 0, unfinished = 0;
  for (int i = 0; i < 50; ++i) {
    const test::TemporaryFolder folder;
    const std::string cache = folder.file("cache");
    const pid_t child = start(cache, {"--frames", "0-40", "--set", "*.voxel_size=0.5"});
    // Most often right after a file has appeared, while it is being filled; else anywhere.
    const auto frames = static_cast<std::size_t>(1 + i % 4);
    kill_run(
        child, [&] { return list_frames(cache).size() >= frames; },
        std::chrono::milliseconds(i % 3 == 0 ? 3 * i : 0));
    if (testing::Test::HasFatalFailure()) return;

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

// The numbers in the names of states within a run.
std::set<int> states(const std::string& cache) {
  std::set<int> frames;
  for (const auto& entry : fs::directory_iterator(cache))
    if (const std::string name = entry.path().filename().string();
        name.ends_with("SimState.bcf") && name[0] != 'L')
      frames.insert(std::stoi(name));
  return frames;
}

TEST(Kill, ARunContinuesFromItsLastStateWithTheSameFrames) {
  const test::TemporaryFolder folder;
  const std::string whole = folder.file("whole"), parts = folder.file("parts");
  const Words all{"--frames", "0-26", "--set", "*.voxel_size=2"};
  const Words saving{
      "--frames", "0-26", "--set", "*.voxel_size=2", "--set", "*.save_state_every=3", "--continue"};
  ASSERT_TRUE(run_to_end(whole, all));

  fs::create_directories(parts);
  std::mt19937 random(5);
  std::set<int> went_on_from;
  for (int i = 0; i < 6; ++i) {
    const auto before = states(parts);
    if (!before.empty()) went_on_from.insert(*before.rbegin());
    // At once when a state has come, or anywhere in the next frames.
    kill_run(
        start(parts, saving), [&] { return states(parts) != before; },
        std::chrono::microseconds(i % 2 == 1 ? random() % 60000 : 0));
    if (testing::Test::HasFatalFailure()) return;

    const auto now = states(parts);
    ASSERT_FALSE(now.empty()) << "kill " << i << " left no state";
    // Two, and one that was about to be removed; and what earlier kills left in the same way.
    EXPECT_LE(now.size(), std::max<std::size_t>(before.size(), 2) + 1);
    const auto names = list_frames(parts);
    for (int f = 0; f <= *now.rbegin(); ++f) {
      ASSERT_TRUE(names.contains(f)) << "kill " << i << " left a state without frame " << f;
      EXPECT_TRUE(read_frame_file_info(parts + "/" + names.at(f), true).good()) << f;
    }
  }
  EXPECT_GE(went_on_from.size(), 3u) << "the runs always began anew";

  ASSERT_TRUE(run_to_end(parts, saving));
  EXPECT_LE(states(parts).size(), 2u);
  const auto left = list_frames(whole), right = list_frames(parts);
  ASSERT_TRUE(left.size() == 27 && right.size() == 27);
  for (int f = 0; f < 27; ++f)
    EXPECT_TRUE(test::read_file(whole + "/" + left.at(f)) ==
                test::read_file(parts + "/" + right.at(f)))
        << "frame " << f;
  for (const auto& entry : fs::directory_iterator(parts))
    EXPECT_NE(entry.path().extension(), ".part") << "what the kills left isn't cleaned up";
}

TEST(Kill, NoFrameOfTheEarlierRunPassesForOneOfTheNew) {
  const test::TemporaryFolder folder;
  const std::string whole = folder.file("whole"), cache = folder.file("cache");
  const Words old{"--frames", "0-26", "--set", "*.voxel_size=2"};
  Words changed = old;
  changed.insert(changed.end(), {"--set", "*.time_scale=1.5"});
  ASSERT_TRUE(run_to_end(cache, old));
  ASSERT_TRUE(run_to_end(whole, changed));
  const auto left = list_frames(whole), right = list_frames(cache);
  ASSERT_TRUE(left.size() == 27 && right.size() == 27);
  std::set<std::size_t> numbers;
  for (std::size_t i = 0; i < 8; ++i) {
    kill_run(
        start(cache, changed),
        [&] {
          const std::size_t marked = stale_frames(cache).size();
          return marked > 0 && marked < 27 - 2 * i;
        },
        std::chrono::microseconds(700 * i));
    if (testing::Test::HasFatalFailure()) return;
    const std::set<int> stale = stale_frames(cache);
    for (int f = 0; f < 27; ++f)
      EXPECT_TRUE(stale.contains(f) || test::read_file(whole + "/" + left.at(f)) ==
                                           test::read_file(cache + "/" + right.at(f)))
          << "kill " << i << ": frame " << f << " has no mark";
    numbers.insert(stale.size());
  }
  EXPECT_GE(numbers.size(), 5u) << "the kills came at the same moment";
  EXPECT_LT(*numbers.rbegin(), 27u);
}

}  // namespace
}  // namespace nbx
