// A run without thread and user interface, and the front end between a run and its thread.
#include "C4D/run/simulation_run.h"

#include <future>

#include "C4D/run/silent_front_end.h"
#include "C4D/run/thread_front_end.h"
#include "C4D/test_document.h"
#include "cache/cache_registry.h"
#include "cache/frame_names.h"
#include "support/support.h"

namespace nbx {
namespace {

const char* const kSmall = R"("size": [9, 9, 9])";

/// A ball of smoke, in the frames 0 to 3.
class Smoke : public test::TestDocument {
 public:
  explicit Smoke(const std::string& cache, const std::string& parameters = kSmall)
      : TestDocument(test::data("ball.json", {{"PARAMETERS", parameters}, {"CACHE", cache}})) {}
  host::BaseObject& volume() { return object("v"); }
};

/// Notes reports, and wants a stop where the test says.
class Watcher final : public SilentFrontEnd {
 public:
  Stop wanted_stop() const override { return stop; }
  void opened(const std::string& volume) override { said += "opened " + volume; }
  void started(const RunPlan& plan) override {
    said += ", started " + std::to_string(plan.first) + "-" + std::to_string(plan.last);
  }
  void frame_done(const FrameTime& time, Simulation3D&) override {
    frames += " " + std::to_string(time.frame());
  }
  void progress(const FrameTime& time, const Simulation3D&, int done, int total) override {
    if (time.frame() == 1 && done > 0 && done < total) stop = on_the_way_to_2;
  }

  std::string said, frames;
  Stop stop = Stop::kNo, on_the_way_to_2 = Stop::kNo;
};

TEST(SimulationRun, EndsWhenItsFrontEndStopsIt) {
  const struct {
    Stop before, on_the_way_to_2;
    std::string said, frames;
    bool reached_end, state;
  } cases[] = {
      {Stop::kNo, Stop::kNo, "opened v, started 0-3", " 0 1 2 3", true, true},
      {Stop::kNo, Stop::kAtFrameEnd, "opened v, started 0-3", " 0 1 2", false, true},
      {Stop::kNo, Stop::kNow, "opened v, started 0-3", " 0 1", false, false},
      {Stop::kAtFrameEnd, Stop::kNo, "opened v, started 0-3", " 0", false, false},
      {Stop::kNow, Stop::kNo, "opened v", "", false, false},
  };
  for (const auto& [before, on_the_way_to_2, said, frames, reached_end, state] : cases) {
    SCOPED_TRACE(frames);
    const test::TemporaryFolder folder;
    Smoke scene(folder.path());
    Watcher front_end;
    front_end.stop = before;
    front_end.on_the_way_to_2 = on_the_way_to_2;
    SimulationRun run(&scene.volume(), {}, front_end);
    const Outcome prepared = run.prepare();
    ASSERT_TRUE(prepared) << prepared.reason();
    while (run.has_next()) {
      const bool whole = run.step();
      EXPECT_EQ(whole, front_end.stop != Stop::kNow);
    }
    EXPECT_NE(run.simulation(), nullptr);
    EXPECT_TRUE(run.finish());
    EXPECT_EQ(run.simulation(), nullptr);
    EXPECT_EQ(front_end.said, said);
    EXPECT_EQ(front_end.frames, frames);
    EXPECT_EQ(run.reached_end(), reached_end);
    EXPECT_EQ(std::filesystem::exists(folder.file("LastSimState.bcf")), state);
    std::string stored;
    for (const auto& [frame, name] : list_frames(folder.path()))
      stored += " " + std::to_string(frame);
    EXPECT_EQ(stored, frames);
  }
}

TEST(SimulationRun, ReportsWhyItCannotStart) {
  const test::TemporaryFolder folder;
  const std::string huge = R"("size": [1e4, 1e4, 1e4], "voxel_size": )";
  const std::pair<std::string, std::string> cases[] = {
      {huge + "10", " free: voxel_size "},
      {huge + "1", "more than a frame file can hold: voxel_size "},
      {huge + "1e-9", "1e+13 x 1e+13 x 1e+13 voxels is more than a frame file can hold"},
      {R"("cache_lock": true)", "the cache is locked: cache_lock is on"}};
  for (const auto& [parameters, why] : cases) {
    Smoke scene(folder.path(), parameters);
    SilentFrontEnd front_end;
    SimulationRun run(&scene.volume(), {}, front_end);
    const Outcome prepared = run.prepare();
    EXPECT_FALSE(prepared) << why;
    EXPECT_NE(prepared.reason().find(why), std::string::npos) << prepared.reason();
    EXPECT_FALSE(run.has_next());
    EXPECT_TRUE(run.finish());
  }
  EXPECT_TRUE(list_frames(folder.path()).empty());
}

TEST(SimulationRun, WritesFramesByTheSettingsOfTheVolume) {
  const test::TemporaryFolder folder;
  const auto store = getCache(folder.path());
  for (const bool other : {false, true}) {
    const std::string compress = other ? "true" : "false", sync = other ? "false" : "true";
    Smoke scene(folder.path(),
                kSmall + (", \"compress_cache\": " + compress) + ", \"cache_sync\": " + sync);
    SilentFrontEnd front_end;
    SimulationRun run(&scene.volume(), {}, front_end);
    ASSERT_TRUE(run.prepare());
    EXPECT_EQ(store->codec, other ? Codec::kPredictive : Codec::kRunLength);
    EXPECT_EQ(store->sync, other ? Sync::kNone : Sync::kDisk);
  }
}

class IdleThread final : public host::C4DThread {
 public:
  std::string GetThreadName() const override { return ""; }

 protected:
  void Main() override {}
};

TEST(ThreadFrontEnd, TheStrongestRequestStopsIt) {
  IdleThread thread;
  Watcher user;
  ThreadFrontEnd front_end(user, thread);
  EXPECT_EQ(front_end.wanted_stop(), Stop::kNo);
  user.stop = Stop::kAtFrameEnd;
  EXPECT_EQ(front_end.wanted_stop(), Stop::kAtFrameEnd);
  user.stop = Stop::kNo;
  front_end.stop(true);
  front_end.stop(false);  // an interrupt that comes late takes nothing back
  EXPECT_EQ(front_end.wanted_stop(), Stop::kNow);

  ThreadFrontEnd other(user, thread);
  other.stop(false);
  EXPECT_EQ(other.wanted_stop(), Stop::kAtFrameEnd);
  thread.End(false);
  EXPECT_TRUE(other.TestBreak());
}

TEST(ThreadFrontEnd, QuestionsWaitForAnAnswerOrTheEnd) {
  for (const char* end : {"yes", "no", "stop"}) {
    IdleThread thread;
    SilentFrontEnd user;
    ThreadFrontEnd front_end(user, thread);
    auto asked = std::async(std::launch::async, [&] { return front_end.may_exceed_memory("?"); });
    const std::string how = end;
    how == "stop" ? front_end.stop(true) : front_end.answer(how == "yes");
    EXPECT_EQ(asked.get(), how == "yes") << how;
  }
}

}  // namespace
}  // namespace nbx
