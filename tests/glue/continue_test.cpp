// Runs that stop and go on, and runs that are refused.
#include <algorithm>

#include "glue/plugin_fixture.h"
#include "math/field_pool.h"

namespace nbx {
namespace {

namespace fs = std::filesystem;
using test::replaced;

// All that a state must carry: a flame whose blurred driver keeps what burns for the next substep,
// a domain that moves and so feels a wind, wind and clock that change, a source and a solid that
// move.
const char* const kScene = R"({
  "fps": 24, "start": 0, "end": 9,
  "objects": [
    {"type": "volume", "name": "fire",
     "keyframes": {"position": [[0, [0, 20, 0]], [4, [1, 20, 0]], [9, [6, 21, 0]]],
                   "parameters.wind_speed": [[0, 0], [9, 120]], "parameters.time_scale": [[0, 1], [9, 0.5]]},
     "parameters": {"size": [24, 40, 20], "voxel_size": 1, "closed_y_min": true,
       "simulate_density": true, "simulate_fuel": true, "simulate_burn": true,
       "fuel_driver": "temperature", "fuel_driver_blur": 2, "fuel_curve": [[0, 0], [0.2, 1]],
       "fuel_to_expansion": 0.3, "decay_fuel": 0.3, "max_substeps": 3, "noise_period": 0.05, "NOISE": 0}},
    {"type": "mesh", "name": "log", "scale": [3, 3, 3], "parameters": {"file": "SPHERE"},
     "keyframes": {"position": [[0, [-4, 8, 0]], [9, [5, 12, 3]]]},
     "tags": [{"type": "emitter", "parameters": {"fuel": 1, "temperature": 1, "expansion": 1}}]},
    {"type": "mesh", "name": "lid", "scale": [2, 2, 2], "parameters": {"file": "SPHERE"},
     "keyframes": {"position": [[0, [0, 22, 0]], [9, [3, 18, 0]]]},
     "tags": [{"type": "emitter", "parameters": {"solid": true}}]}
  ]})";

class Continue : public test::PluginFixture {
 protected:
  int simulate(const std::string& path, int last, const std::string& cache,
               const std::vector<std::string>& flags = {}) {
    auto arguments = simulate_arguments(path, last, cache);
    for (const std::string& flag : flags) arguments.AddFlag(flag);
    return run("simulate", arguments);
  }
  bool warned(const std::string& text) {
    return std::any_of(context_->warnings.begin(), context_->warnings.end(),
                       [&](const auto& line) { return line.find(text) != std::string::npos; });
  }
};

TEST_F(Continue, GivesTheFramesOfARunThatNeverStopped) {
  for (const char* noise : {"vorticity", "noise_strength"}) {
    const auto path = scene(replaced(kScene, "\"NOISE\": 0", std::string("\"") + noise + "\": 40"));
    ASSERT_EQ(simulate(path, 6, "whole"), host::kDone);
    ASSERT_EQ(simulate(path, 3, "parts"), host::kDone);
    ASSERT_EQ(simulate(path, 6, "parts", {"continue"}), host::kDone);
    EXPECT_FALSE(warned("isn't that of the state")) << context_->warnings.front();
    EXPECT_EQ(context_->all<std::int64_t>("start", "first"), std::vector<std::int64_t>{4});
    const auto whole = frame_files("whole"), parts = frame_files("parts");
    ASSERT_EQ(whole.size(), 7u);
    ASSERT_EQ(parts.size(), 7u);
    for (std::size_t i = 0; i < 7; ++i)
      EXPECT_EQ(test::read_file(whole[i]), test::read_file(parts[i])) << noise << " frame " << i;
    fs::remove_all(folder_.file("whole"));
    fs::remove_all(folder_.file("parts"));
  }
}

TEST_F(Continue, TellsWhatChangedAndWhatIsMissing) {
  const auto path = scene(replaced(kScene, "\"NOISE\": 0", "\"vorticity\": 0"));
  ASSERT_EQ(simulate(path, 2, "cache", {"continue"}), host::kDone);
  EXPECT_TRUE(warned("there is no such file; the run starts at frame 0"));
  const std::string state = folder_.file("cache/LastSimState.bcf");
  const std::string bytes = test::read_file(state);

  const std::string text = test::read_file(path);
  std::ofstream(path) << replaced(text, "\"vorticity\": 0", "\"vorticity\": 3");
  ASSERT_EQ(simulate(path, 3, "cache", {"continue"}), host::kDone);
  EXPECT_TRUE(warned("fire.vorticity (0, now 3)"));
  EXPECT_EQ(context_->all<std::int64_t>("end", "frames"), std::vector<std::int64_t>{1});

  // A file that is cut starts anew; one without whole grids goes on empty, at its time.
  std::ofstream(state, std::ios::binary) << bytes.substr(0, bytes.size() / 2);
  ASSERT_EQ(simulate(path, 1, "cache", {"continue"}), host::kDone);
  EXPECT_TRUE(warned("the run starts at frame 0"));
  EXPECT_EQ(context_->all<std::int64_t>("end", "frames"), std::vector<std::int64_t>{2});
  SimFrame small;
  small.frameTime = {{3, 24}, {1, 24}};
  small.add(acquire_field({2, 2, 2}), kGridDensity, {0, 0, 0}, {});
  ASSERT_GT(small.write(state, Codec::kRaw), 0u);
  ASSERT_EQ(simulate(path, 4, "cache", {"continue"}), host::kDone);
  EXPECT_TRUE(warned("less than 3 voxels"));
  EXPECT_EQ(context_->all<std::int64_t>("start", "first"), std::vector<std::int64_t>{4});
}

TEST_F(Continue, QuestionsAreAnsweredByOptions) {
  const auto path = scene(replaced(kScene, "\"NOISE\": 0", "\"vorticity\": 0"));
  host::CommandArguments plain;
  plain.Add("scene", path);
  plain.AddFrames("frames", {0});
  plain.Add("cache", folder_.file("cache"));
  ASSERT_EQ(run("simulate", plain), host::kDone);
  EXPECT_EQ(frame_files().size(), 1u) << "a range of one frame";
  EXPECT_EQ(run("simulate", plain), host::kFailed);
  EXPECT_NE(context_->errors.at(0).find("give --overwrite"), std::string::npos);
  auto fresh = plain;
  fresh.AddFlag("new-cache");
  EXPECT_EQ(run("simulate", fresh), host::kDone);
  EXPECT_EQ(frame_files("Cache 001").size(), 1u);
  std::ofstream(folder_.file("cache/CacheLock.lck"));
  EXPECT_EQ(simulate(path, 0, "cache"), host::kFailed);
  EXPECT_NE(context_->errors.at(0).find("locked"), std::string::npos);
  const auto huge = scene(replaced(replaced(kScene, "\"NOISE\": 0", "\"vorticity\": 0"),
                                   "\"voxel_size\": 1", "\"voxel_size\": 0.022"));
  EXPECT_EQ(simulate(huge, 0, "huge"), host::kFailed);
  EXPECT_NE(context_->errors.at(0).find("of memory"), std::string::npos);
  EXPECT_TRUE(frame_files("huge").empty());
}

}  // namespace
}  // namespace nbx
