// Runs that add detail to a finished run, through the program's commands.
#include <set>

#include "C4D/plugin_fixture.h"
#include "host/render/render_command.h"

namespace nbx {
namespace {

namespace fs = std::filesystem;
using test::replaced;

// A domain that moves and isn't a whole number of voxels wide, a clock that changes, a source that
// moves, and gas that burns.
std::string flame(const std::string& values) {
  const std::string text = test::read_file(NBX_C4D_DATA "/fire.json");
  return replaced(replaced(replaced(replaced(text, "VALUES", values), "KEYS", ""), "TAG",
                           R"("parameters": {"fuel": 1, "temperature": 1, "expansion": 1})"),
                  "[24, 40, 20]", "[23, 39, 19]");
}
const std::string kVelocity = R"("cache_velocity": true)";

class Upres : public test::PluginFixture {
 protected:
  /// "option=value" or a flag; the coarse run is in "flame".
  int simulate(const std::string& path, int first, int last,
               const std::vector<std::string>& options) {
    auto arguments = simulate_arguments(path, last, "flame", first, false);
    for (const std::string& option : options)
      if (const auto at = option.find('='); at != option.npos)
        arguments.Add(option.substr(0, at), option.substr(at + 1));
      else
        arguments.AddFlag(option);
    return run("simulate", arguments);
  }
  int render(const std::string& path, bool upres) {
    auto arguments = with({{"scene", path},
                           {"output", folder_.file("a.png")},
                           {"size", "2x2"},
                           {"samples", "1"},
                           {"threads", "1"},
                           {"cache", folder_.file("flame")}});
    arguments.AddFrames("frames", {3});
    if (upres) arguments.AddFlag("upres");
    host::RenderCommand command("test");
    return run(command, arguments);
  }
  bool refused(const std::string& text) {
    return context_->errors.size() == 1 && context_->errors[0].find(text) != std::string::npos;
  }
  std::vector<std::string> bytes(const std::string& cache) {
    std::vector<std::string> all;
    for (const std::string& path : frame_files(cache)) all.push_back(test::read_file(path));
    return all;
  }
};

TEST_F(Upres, IsRefusedWithTheCureWhereTheCoarseRunDoesNotFit) {
  const std::string path = scene(flame(R"("cfl": 2)"));
  EXPECT_EQ(simulate(path, 0, 3, {"upres"}), host::kBadInput);
  EXPECT_TRUE(refused("flame, has no frames: simulate the scene without --upres"));
  ASSERT_EQ(simulate(path, 2, 4, {}), host::kDone);
  EXPECT_EQ(simulate(path, 2, 4, {"upres"}), host::kBadInput);
  EXPECT_TRUE(
      refused("have no velocity, which up-resolution needs: simulate the scene without "
              "--upres, and with cache_velocity, first"));
  ASSERT_EQ(simulate(scene(flame(kVelocity)), 2, 4, {"overwrite"}), host::kDone);
  const struct {
    std::string scene;
    int first, last;
    std::vector<std::string> options;
    std::string error;
  } cases[] = {
      {flame(kVelocity),
       5,
       9,
       {"upres"},
       "has frames 2-4, and none of the range 5-9: give --frames"},
      {replaced(flame(kVelocity), "\"voxel_size\": 1", "\"voxel_size\": 0.8"),
       2,
       4,
       {"upres"},
       "have the size 1, but voxel_size is 0.8: set voxel_size to 1"},
      {flame(kVelocity), 2, 4, {"upres", "start-from=a.bcf"}, "give the number of a frame"}};
  for (const auto& [text, first, last, options, error] : cases) {
    EXPECT_EQ(simulate(scene(text), first, last, options), host::kBadInput) << error;
    EXPECT_TRUE(refused(error)) << context_->errors.at(0);
    EXPECT_FALSE(fs::exists(folder_.file("flame upres"))) << "nothing is written";
  }
  // Of a longer range, the frames that the coarse run has.
  ASSERT_EQ(simulate(scene(flame(kVelocity)), 0, 9, {"upres"}), host::kDone);
  EXPECT_EQ(context_->all<std::int64_t>("start", "first").at(0), 2);
  EXPECT_EQ(frame_files("flame upres").size(), 3u);
}

TEST_F(Upres, ContinuesAndLeavesTheCoarseRunAlone) {
  const std::string path =
      scene(flame(kVelocity + R"(, "upres_factor": 3, "cache_lock": true, "save_state_every": 2)"));
  ASSERT_EQ(simulate(scene(flame(kVelocity)), 0, 6, {}), host::kDone);
  const auto coarse = bytes("flame");
  scene(test::read_file(path));
  scene(flame(kVelocity + R"(, "upres_factor": 3, "cache_lock": true, "save_state_every": 2)"));
  ASSERT_EQ(simulate(path, 0, 6, {"upres"}), host::kDone);
  const auto whole = bytes("flame upres");
  ASSERT_EQ(whole.size(), 7u);
  EXPECT_TRUE(bytes("flame") == coarse);

  EXPECT_EQ(simulate(path, 0, 6, {"upres"}), host::kDone);
  EXPECT_EQ(context_->results.at(0), "Nothing to do: frames 0-6 are there.");
  for (const std::string from : {"continue=4", "start-from=2"}) {
    ASSERT_EQ(simulate(path, 0, 6, {"upres", "overwrite", from, "threads=3"}), host::kDone);
    EXPECT_TRUE(bytes("flame upres") == whole) << from;
  }
  // A frame without a state: its noise starts again.
  ASSERT_EQ(simulate(path, 0, 6, {"upres", "overwrite", "start-from=3"}), host::kDone);
  const auto again = bytes("flame upres");
  EXPECT_TRUE(again.at(3) == whole.at(3));
  EXPECT_FALSE(again.at(6) == whole.at(6));
  EXPECT_EQ(simulate(scene(flame(kVelocity)), 0, 6, {"upres", "continue"}), host::kFailed);
  EXPECT_TRUE(refused("voxels of another size"));
}

TEST_F(Upres, PicturesShowTheFramesThatAreChosen) {
  const std::string path = scene(flame(kVelocity + R"(, "smoke_channel": "density")"));
  ASSERT_EQ(simulate(path, 0, 3, {}), host::kDone);
  EXPECT_EQ(render(path, false), host::kDone);
  EXPECT_NE(render(path, true), host::kDone) << "there is no fine run yet";
  ASSERT_EQ(simulate(path, 0, 3, {"upres"}), host::kDone);
  fs::remove_all(folder_.file("flame"));
  EXPECT_EQ(render(path, true), host::kDone);
}

}  // namespace
}  // namespace nbx
