// Runs that stop and continue, and runs that are refused.
#include <algorithm>
#include <set>

#include "C4D/plugin_fixture.h"
#include "cache/stale_frames.h"
#include "math/field_pool.h"

namespace nbx {
namespace {

namespace fs = std::filesystem;
using test::replaced;

// All that a state must carry: a flame whose blurred driver keeps what burns for the next substep,
// a domain that moves and so feels a wind, wind and clock that change, a source and a solid that
// move.
const std::string kScene = test::read_file(NBX_C4D_DATA "/fire.json");
const char* const kBurning = R"("parameters": {"fuel": 1, "temperature": 1, "expansion": 1})";

std::string fire(const std::string& values, const std::string& keys = "",
                 const std::string& tag = kBurning) {
  return replaced(replaced(replaced(kScene, "VALUES", values), "KEYS", keys), "TAG", tag);
}

class Continue : public test::PluginFixture {
 protected:
  /// What a user types who allows nothing but the flags, some of which are "option=value".
  int simulate(const std::string& path, int last, const std::string& cache,
               const std::vector<std::string>& flags = {}, const std::string& from = "",
               int first = 0) {
    auto arguments = simulate_arguments(path, last, cache, first, false);
    for (const std::string& flag : flags)
      if (const auto at = flag.find('='); at != flag.npos)
        arguments.Add(flag.substr(0, at), flag.substr(at + 1));
      else
        arguments.AddFlag(flag);
    if (!from.empty()) arguments.Add(fs::exists(from) ? "start-from" : "continue", from);
    return run("simulate", arguments);
  }
  bool warned(const std::string& text) {
    return std::any_of(context_->warnings.begin(), context_->warnings.end(),
                       [&](const auto& line) { return line.find(text) != std::string::npos; });
  }
  bool refused(const std::string& text) {
    return !context_->errors.empty() && context_->errors[0].find(text) != std::string::npos;
  }
  bool reported(const std::string& text) {
    return std::any_of(context_->results.begin(), context_->results.end(),
                       [&](const auto& line) { return line.find(text) != std::string::npos; });
  }
  int look(const std::string& verb, const std::string& cache) {
    return run(verb, with({{"path", folder_.file(cache)}}));
  }
  std::int64_t first_frame() { return context_->all<std::int64_t>("start", "first").at(0); }
  void expect_same_frames(const std::string& a, const std::string& b, std::size_t count) {
    const auto left = frame_files(a), right = frame_files(b);
    ASSERT_EQ(left.size(), count);
    ASSERT_EQ(right.size(), count);
    for (std::size_t i = 0; i < count; ++i)
      EXPECT_TRUE(test::read_file(left[i]) == test::read_file(right[i])) << "frame " << i;
  }
  std::set<std::string> states(const std::string& cache) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_.file(cache)))
      if (const std::string name = entry.path().filename(); name.find("SimState") != name.npos)
        names.insert(name);
    return names;
  }
};

// From its end, from a state on the way, and from a state whose notes are of an earlier version.
TEST_F(Continue, GivesTheFramesOfARunThatNeverStopped) {
  const std::string changing =
      R"("parameters.noise_strength": [[0, 0], [1, 0], [2, 40]],
         "parameters.noise_period": [[0, 0.05], [6, 0.009]],)";
  const std::string late =
      R"("parameters": {"expansion": 0},
         "keyframes": {"parameters.fuel": [[0, 0], [4, 0], [5, 1]],
                       "parameters.temperature": [[0, 0], [4, 0], [5, 1]]})";
  const std::string noise = R"("noise_strength": 40, "noise_period": 0.05)";
  const std::string every = R"(, "save_state_every": 2)";
  const struct {
    std::string what, values, keys, tag;
  } cases[] = {{"vorticity", R"("vorticity": 40)", "", kBurning},
               {"old notes", noise, "", kBurning},
               {"changing noise", R"("vorticity": 1)", changing, kBurning},
               {"no gas yet", R"("vorticity": 1)", changing, late}};
  for (const auto& [what, values, keys, tag] : cases) {
    SCOPED_TRACE(what);
    ASSERT_EQ(simulate(scene(fire(values, keys, tag)), 7, "whole"), host::kDone);
    const auto path = scene(fire(values + every, keys, tag));
    ASSERT_EQ(simulate(path, 3, "parts"), host::kDone);
    if (what == "old notes") {
      const auto notes = folder_.file("parts/LastSimState.json");
      const std::string text = test::read_file(notes);
      std::ofstream(notes) << replaced(replaced(text, "\"noise\"", "\"x\""), "\"bytes\"", "\"y\"");
    }
    ASSERT_EQ(simulate(path, 7, "parts", {"continue"}), host::kDone);
    EXPECT_FALSE(warned("has changed")) << context_->warnings.front();
    EXPECT_EQ(first_frame(), 4);
    expect_same_frames("whole", "parts", 8);
    std::set<std::string> kept;
    for (const std::string state : {"0000000004", "0000000006", "Last"})
      kept.insert({state + "SimState.bcf", state + "SimState.json"});
    EXPECT_EQ(states("parts"), kept);
    ASSERT_EQ(simulate(path, 7, "parts", {}, "5"), host::kDone);
    EXPECT_EQ(first_frame(), 5);
    expect_same_frames("whole", "parts", 8);
    // The range begins later than the run, whose domain is that of its first frame.
    EXPECT_EQ(simulate(path, 7, "parts", {"start-from=4", "yes"}, "", 5), host::kFailed);
    EXPECT_TRUE(refused("give --overwrite to replace frames 5-7, or --new-cache"));
    ASSERT_EQ(simulate(path, 7, "parts", {"start-from=4", "overwrite"}, "", 5), host::kDone);
    EXPECT_EQ(first_frame(), 5);
    expect_same_frames("whole", "parts", 8);
    ASSERT_EQ(simulate(path, 9, "parts"), host::kDone) << "the run still begins at frame 0";
    EXPECT_EQ(first_frame(), 8);
    fs::remove_all(folder_.file("whole"));
    fs::remove_all(folder_.file("parts"));
  }
}

TEST_F(Continue, ReportsWhatChangedAndRefusesToLoseARun) {
  const auto path = scene(fire(R"("vorticity": 0, "save_state_every": 1)"));
  const std::string state = folder_.file("cache/LastSimState.bcf");
  ASSERT_EQ(simulate(path, 1, "cache", {"continue"}), host::kDone);
  EXPECT_TRUE(warned("there is no such file; the run starts at frame 0"));
  ASSERT_EQ(simulate(path, 2, "cache", {"continue"}), host::kDone);

  const std::string text = test::read_file(path);
  std::ofstream(path) << replaced(text, "\"vorticity\": 0",
                                  "\"cache_velocity\": true, \"vorticity\": 3");
  ASSERT_EQ(simulate(path, 4, "cache", {"continue"}), host::kDone);
  EXPECT_TRUE(warned("changed since frame 2 was simulated: fire.vorticity was 0 and is now 3"));
  EXPECT_TRUE(warned("the earlier frames were stored with other settings: fire.cache_velocity"));
  EXPECT_EQ(context_->all<std::int64_t>("end", "frames").at(0), 2);

  // States that can't be read are passed over, one after the other.
  const std::string bytes = test::read_file(state);
  std::ofstream(state, std::ios::binary) << bytes.substr(0, bytes.size() / 2);
  ASSERT_EQ(simulate(path, 4, "cache", {"continue"}), host::kDone);
  EXPECT_TRUE(warned("the run continues from frame 3")) << context_->warnings.at(0);
  ASSERT_EQ(simulate(path, 5, "cache", {"continue"}), host::kDone);
  EXPECT_EQ(states("cache").count("0000000003SimState.bcf"), 1u) << "its frames are still there";
  EXPECT_EQ(simulate(path, 4, "cache", {}, "1"), host::kFailed);
  EXPECT_TRUE(
      refused("no state to continue from at or before frame 1: the first state is that of "
              "frame 3: give --overwrite"));
  for (const std::string& name : states("cache")) fs::remove(folder_.file("cache/" + name));
  EXPECT_EQ(simulate(path, 4, "cache", {"continue", "yes"}), host::kFailed);
  EXPECT_TRUE(refused("there is no such file: give --overwrite"));
  EXPECT_EQ(frame_files().size(), 6u);
  EXPECT_EQ(simulate(path, 0, "cache", {"continue", "overwrite"}), host::kDone);

  // A kill between the notes and the state leaves a state that still has its own.
  ASSERT_EQ(simulate(path, 1, "pair"), host::kDone);
  const std::string pair = folder_.file("pair/LastSimState.bcf");
  const std::string old_state = test::read_file(pair);
  ASSERT_EQ(simulate(path, 2, "pair", {"continue"}), host::kDone);
  std::ofstream(pair, std::ios::binary) << old_state;
  std::ofstream(path) << replaced(text, "\"vorticity\": 0", "\"vorticity\": 5");
  ASSERT_EQ(simulate(path, 2, "pair", {}, "0"), host::kFailed);
  ASSERT_EQ(simulate(path, 2, "pair", {}, "1"), host::kDone);
  EXPECT_TRUE(warned("fire.vorticity was 3 and is now 5"));
}

TEST_F(Continue, QuestionsAreAnsweredByOptions) {
  const auto path = scene(fire(R"("vorticity": 0)"));
  ASSERT_EQ(simulate(path, 0, "one"), host::kDone);
  EXPECT_EQ(frame_files("one").size(), 1u) << "a range of one frame";
  EXPECT_EQ(simulate(path, 0, "one"), host::kFailed);
  EXPECT_TRUE(refused("give --overwrite"));
  ASSERT_EQ(simulate(path, 1, "cache"), host::kDone);
  EXPECT_EQ(simulate(path, 1, "cache", {"yes"}), host::kDone);
  EXPECT_TRUE(reported("Nothing to do: frames 0-1 are there."));
  EXPECT_TRUE(context_->all<std::int64_t>("start", "first").empty());

  // A finished run whose end moves out is extended; with anything else changed the user is asked.
  ASSERT_EQ(simulate(path, 2, "cache"), host::kDone);
  EXPECT_EQ(first_frame(), 2);
  ASSERT_EQ(simulate(path, 2, "whole"), host::kDone);
  expect_same_frames("whole", "cache", 3);
  EXPECT_EQ(simulate(path, 1, "cache"), host::kDone);
  EXPECT_TRUE(reported("Nothing to do: frames 0-1 are there."));
  EXPECT_EQ(simulate(path, 3, "cache", {"yes"}, "", 1), host::kFailed);
  EXPECT_TRUE(
      refused("right after its frame 0: give --start-from 0 --overwrite to continue from that "
              "frame, --over"));
  const struct {
    std::string from;
    int last;
    std::string why;
  } cases[] = {{"3", 9, "has no frame 3: the frames to start from are 0-2"},
               {"2", 2, "the range ends at frame 2"},
               {"./3", 9, "there is no file"}};
  for (const auto& [from, last, why] : cases) {
    EXPECT_EQ(simulate(path, last, "cache", {"start-from=" + from}), host::kBadInput);
    EXPECT_TRUE(refused(why)) << context_->errors.at(0);
  }
  EXPECT_EQ(simulate(path, 9, "none", {"start-from=3"}), host::kBadInput);
  EXPECT_FALSE(fs::exists(folder_.file("none")));
  expect_same_frames("whole", "cache", 3);
  for (const char* other : {R"("vorticity": 1)", R"("vorticity": 0, "cache_velocity": true)"})
    EXPECT_EQ(simulate(scene(fire(other)), 3, "cache"), host::kFailed) << other;
  scene(fire(R"("vorticity": 0)"));
  ASSERT_EQ(simulate(path, 3, "cache", {"overwrite"}), host::kDone);
  EXPECT_EQ(first_frame(), 0);
  ASSERT_EQ(simulate(path, 3, "cache", {"start-from=2", "continue"}), host::kBadInput);
  EXPECT_TRUE(refused("--continue and --start-from can't be used together"));
  fs::remove(frame_files().at(1));
  EXPECT_EQ(simulate(path, 4, "cache"), host::kFailed) << "a frame is missing";

  const auto huge =
      scene(replaced(fire(R"("vorticity": 0)"), "\"voxel_size\": 1", "\"voxel_size\": 0.022"));
  EXPECT_EQ(simulate(huge, 0, "huge"), host::kBadInput);
  EXPECT_TRUE(refused("of memory"));
  EXPECT_TRUE(frame_files("huge").empty());
}

// Frames for rendering hold less than states.
TEST_F(Continue, StartsFromOrdinaryFrames) {
  // What neither frame nor scene tell is left out: the driver's blur, and a wind from motion.
  fs::copy_file(NBX_SCENES "/meshes/sphere.obj", folder_.file("ball.obj"));
  const std::string steady =
      replaced(replaced(test::read_file(NBX_C4D_DATA "/steady_fire.json"), "SPHERE", "ball.obj"),
               "SPHERE", "ball.obj");
  const auto path = scene(steady);
  ASSERT_EQ(simulate(path, 4, "whole"), host::kDone);
  const auto whole = frame_files("whole");
  ASSERT_EQ(simulate(path, 4, "from", {}, whole[3]), host::kDone);
  EXPECT_EQ(first_frame(), 4);
  EXPECT_TRUE(test::read_file(frame_files("from").at(0)) == test::read_file(whole[4]));
  EXPECT_FALSE(warned("contains no "));
  for (const std::string& state : states("whole")) fs::remove(folder_.file("whole/" + state));
  const std::string last = test::read_file(whole[4]);
  fs::remove(whole[4]);
  ASSERT_EQ(simulate(path, 4, "whole", {"start-from=3"}, "", 4), host::kDone);
  EXPECT_TRUE(test::read_file(whole[4]) == last);
  EXPECT_EQ(context_->warnings, std::vector<std::string>());
  ASSERT_EQ(simulate(path, 4, "whole"), host::kDone);
  EXPECT_TRUE(reported("Nothing to do")) << "the run began at frame 0";
  scene(replaced(test::read_file(path), "\"decay_fuel\": 0.3", "\"decay_fuel\": 0.2"));
  ASSERT_EQ(simulate(path, 4, "whole", {"start-from=3", "overwrite"}), host::kDone);
  EXPECT_EQ(context_->warnings.size(), 1u);
  EXPECT_TRUE(warned("frame 3 was simulated: fire.decay_fuel was 0.3 and is now 0.2"));
  scene(steady);
  ASSERT_EQ(simulate(path, 4, "whole", {"start-from=3", "overwrite"}), host::kDone);

  SimFrame still, empty;
  ASSERT_TRUE(still.load(whole[3]));
  ASSERT_TRUE(still.grid(kGridDensity));
  const std::string path_still = folder_.file("still.bcf"), path_empty = folder_.file("empty.bcf");
  ASSERT_GT(still.write(path_still, Codec::kRaw), 0u);
  ASSERT_EQ(simulate(path, 4, "still", {}, path_still), host::kDone);
  EXPECT_TRUE(
      warned("still.bcf contains no velocity, temperature, fuel, burn: its gas starts at rest"));

  // A state without whole grids continues without gas at its time, or doesn't change a run that
  // starts at its own.
  empty.frameTime = {{3, 24}, {1, 24}};
  empty.add(acquire_field({2, 2, 2}), kGridDensity, {0, 0, 0}, {});
  ASSERT_GT(empty.write(path_empty, Codec::kRaw), 0u);
  ASSERT_EQ(simulate(path, 4, "empty", {}, path_empty), host::kDone);
  EXPECT_TRUE(warned("less than 3 voxels: the run continues without gas"));
  EXPECT_EQ(first_frame(), 4);
  const std::string text = test::read_file(path);
  std::ofstream(path) << replaced(text, R"("cache_velocity")",
                                  R"("state_continue_time": false, "cache_velocity")");
  ASSERT_EQ(simulate(path, 4, "anew", {}, path_empty), host::kDone);
  EXPECT_TRUE(warned("less than 3 voxels: a new run starts"));
  expect_same_frames("whole", "anew", 5);
}

// Frames after the end of a run that came later are marked until they are simulated again.
TEST_F(Continue, FramesOfAnEarlierRunAreFound) {
  const auto path = scene(fire(R"("vorticity": 0, "save_state_every": 1)"));
  ASSERT_EQ(simulate(path, 4, "cache"), host::kDone);
  const std::string last_state = test::read_file(folder_.file("cache/LastSimState.bcf"));
  std::set<int> marked;
  prepare_context = [&](test::RecordingContext& context) {
    // The first line after the start comes from within a frame if it is due.
    context.on_event = [](const std::string& event) {
      if (event == "start") std::this_thread::sleep_for(std::chrono::milliseconds(150));
    };
    context.on_progress = [&](const std::string&) {
      if (context.interrupts > 0) return;
      marked = stale_frames(folder_.file("cache"));
      context.interrupt_and_wait(2);
    };
  };
  EXPECT_EQ(simulate(path, 4, "cache", {"start-from=2", "overwrite"}), host::kInterrupted);
  prepare_context = {};
  EXPECT_EQ(context_->all<std::int64_t>("end", "frames").at(0), 0) << "too late";
  EXPECT_EQ(marked, (std::set<int>{3, 4}));
  EXPECT_EQ(look("verify", "cache"), host::kDone) << "no frame was replaced";
  EXPECT_TRUE(reported("no damage"));

  scene(fire(R"("vorticity": 9)"));
  ASSERT_EQ(simulate(path, 2, "cache", {"overwrite"}), host::kDone);
  EXPECT_EQ(look("verify", "cache"), host::kFailed);
  EXPECT_TRUE(reported("frames 3-4 belong to an earlier run: simulate them again or remove them"));
  EXPECT_EQ(look("info", "cache"), host::kDone);
  EXPECT_TRUE(reported("3-4 from an earlier run"));
  EXPECT_EQ(simulate(path, 9, "cache", {"start-from=3"}), host::kBadInput);
  EXPECT_TRUE(refused("belongs to an earlier run than the frames before it"));
  // A state of such a frame doesn't count, though it looks good.
  std::ofstream(folder_.file("cache/0000000004SimState.bcf"), std::ios::binary) << last_state;
  ASSERT_EQ(simulate(path, 3, "cache", {"continue"}), host::kDone);
  EXPECT_EQ(first_frame(), 3);
  EXPECT_TRUE(warned("its frame 4 belongs to an earlier run; the run continues from frame 2"));
  EXPECT_EQ(look("verify", "cache"), host::kFailed);
  EXPECT_TRUE(reported("frame 4 belongs to an earlier run: simulate it again or remove it"));
  ASSERT_EQ(simulate(path, 3, "cache"), host::kDone);
  EXPECT_TRUE(reported("Nothing to do"));
  ASSERT_EQ(simulate(path, 5, "cache"), host::kDone);
  EXPECT_EQ(look("verify", "cache"), host::kDone);
  const std::string mark = folder_.file("cache/StaleFrames.json");
  EXPECT_FALSE(fs::exists(mark));
  std::ofstream(mark) << R"({"stale": [[1, 1], [7, 2000000000]]})";
  EXPECT_EQ(simulate(path, 5, "cache"), host::kFailed) << "a frame isn't of the run";
  std::ofstream(mark) << R"({"stale": [[1]]})";
  EXPECT_EQ(look("verify", "cache"), host::kFailed);
  EXPECT_TRUE(reported("StaleFrames.json: the mark of stale frames can't be read"));
}

// The frames before the run are the same files, until somebody writes one.
TEST_F(Continue, ANewCacheSharesTheEarlierFrames) {
  const auto path = scene(fire(R"("vorticity": 5, "save_state_every": 2)"));
  ASSERT_EQ(simulate(path, 5, "cache"), host::kDone);
  ASSERT_EQ(simulate(path, 5, "kept"), host::kDone);
  for (const std::string how : {"start-from=2", "continue=4"}) {
    ASSERT_EQ(simulate(path, 5, "cache", {how, "new-cache"}), host::kDone) << how;
    EXPECT_EQ(first_frame(), how == "continue=4" ? 5 : 3);
  }
  EXPECT_TRUE(reported("give --cache " + folder_.file("scene.fire.002")));
  for (const std::string cache : {"scene.fire.001", "scene.fire.002"}) {
    expect_same_frames("kept", cache, 6);
    EXPECT_EQ(fs::hard_link_count(frame_files(cache)[2]), 3u);
    EXPECT_EQ(states(cache).count("0000000004SimState.json"), 1u);
  }
  scene(fire(R"("vorticity": 50)"));
  ASSERT_EQ(simulate(path, 5, "scene.fire.001", {"overwrite"}), host::kDone);
  expect_same_frames("kept", "cache", 6);
  EXPECT_TRUE(test::read_file(frame_files("cache")[2]) !=
              test::read_file(frame_files("scene.fire.001")[2]));
}

}  // namespace
}  // namespace nbx
