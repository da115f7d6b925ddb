// A user's run in its thread: refusals, what it does to its cache, and its end when the host goes
// down.
#include "C4D/simulation_thread.h"

#include <functional>
#include <semaphore>

#include "C4D/load_string.h"
#include "cache/cache_registry.h"
#include "glue/test_document.h"
#include "support/support.h"

namespace nbx {
namespace {

struct Dialog final : RunDialog {
  void refuse(const std::string& title, const std::string& text) override {
    refusal = {title, text};
  }
  void message(const std::string&, const std::string&) override {}
  bool ask_to_stop(const std::string&, const std::string&) override { return false; }
  OldCache ask_about_cache(const std::string&, const std::string&) override {
    on_question();
    return OldCache::kMakeNew;
  }
  bool may_go_on(const std::string&) override { return false; }
  bool may_start_over(const std::string&) override { return false; }
  int device() const override { return -1; }
  int threads() const override { return 1; }
  void started(const RunPlan&) override {}
  void warn(const std::string&) override {}
  void progress(const FrameTime&, const Simulation3D&, int, int) override {}
  void substep_done(const FrameTime&, const Simulation3D&) override {}
  void frame_done(const FrameTime&, Simulation3D&) override { frames.release(); }
  void frames_lost(const std::vector<LostFrame>&) override {}

  std::pair<std::string, std::string> refusal;
  std::function<void()> on_question;
  std::counting_semaphore<> frames{0};
};

class UserRun : public testing::Test {
 protected:
  ~UserRun() override {
    thread.stop(true);
    thread.End(true);
  }
  test::TemporaryFolder folder;
  test::LogCapture log;
  const std::string base = folder.file("base"), cache = base + "/c";
  test::TestDocument document{
      R"({"type": "volume", "name": "v", "parameters": {"size": [40, 40, 40], "voxel_size": 4,
          "compress_cache": true, "cache_sync": false, "time_mode": "own_range", "time_end": 4000,
          "cache_name": ")" +
      cache + "\"}}"};
  host::BaseObject& volume = document.object("v");
  Dialog dialog;
  SimulationThread& thread = simulation_thread();
};

TEST_F(UserRun, StopsWhenTheHostGoesDown) {
  std::filesystem::create_directories(cache);
  const auto store = getCache(cache);
  ASSERT_TRUE(thread.start_simulation(&volume, false, dialog));
  for (int i = 0; i < 3; ++i) dialog.frames.acquire();
  stop_at_shutdown();
  EXPECT_TRUE(thread.TestBreak());  // evaluations look at it
  thread.End(true);
  EXPECT_FALSE(thread.reached_end());
  EXPECT_EQ(thread.failure(), "");
  stop_at_shutdown();
  EXPECT_EQ(log.count("waiting for sim thread to terminate"), 1);
  EXPECT_EQ(log.count("SparseBlocks: 0"), 1);

  EXPECT_EQ(store->sync, Sync::kNone);
  const std::string file = test::read_file(store->fileName(0, 0));
  ASSERT_GT(file.size(), kBcfHeaderSize + 5);
  EXPECT_EQ(file[kBcfHeaderSize + 5], static_cast<char>(Codec::kPredictive));
}

TEST_F(UserRun, RefusalsHaveATitleAndAText) {
  EXPECT_FALSE(thread.start_simulation(nullptr, false, dialog));
  EXPECT_EQ(dialog.refusal, std::pair(load_string(10043), load_string(10044)));
  std::filesystem::create_directories(cache);
  std::ofstream(cache + "/Autosave.c4d") << "an earlier run";
  dialog.on_question = [this] {  // now there is no room for a new cache, nor in the home folder
    std::filesystem::remove_all(base);
    std::ofstream(base) << "a file";
    setenv("HOME", base.c_str(), 1);
  };
  const char* const home = std::getenv("HOME");
  const std::string before = home ? home : "";
  EXPECT_FALSE(thread.start_simulation(&volume, false, dialog));
  setenv("HOME", before.c_str(), 1);
  EXPECT_EQ(dialog.refusal, std::pair(load_string(10009), load_string(10012)));
  EXPECT_FALSE(dialog.refusal.first.empty() || dialog.refusal.second.empty());
}

}  // namespace
}  // namespace nbx
