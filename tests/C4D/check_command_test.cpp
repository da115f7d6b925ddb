// What a user hears about a scene that shows nothing: before a run, after it, and from `check`.
#include "C4D/plugin_fixture.h"

namespace nbx {
namespace {

using test::replaced;
using Numbers = std::vector<std::int64_t>;
using Texts = std::vector<std::string>;

const std::string kGood =
    replaced(test::read_file(NBX_C4D_DATA "/smoke.json"), R"("simulate_density": true)",
             R"("simulate_density": true, "smoke_channel": "density")");
const std::string kOutside = replaced(kGood, "[0, 8, 0]", "[0, 800, 0]");

class Warnings : public test::PluginFixture {
 protected:
  bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  }
};

TEST_F(Warnings, ComeOnceAndEmptyFramesAreCounted) {
  const std::string path = scene(kOutside);
  ASSERT_EQ(run("simulate", simulate_arguments(path, 2)), host::kDone);
  ASSERT_EQ(context_->warnings.size(), 1u);
  EXPECT_TRUE(context_->warnings[0].starts_with(
      R"(scene.json: volume "smoke": emitter "ball": it lies outside of the domain)"));
  EXPECT_TRUE(context_->results.at(0).starts_with("done: 3 frames, all empty, in "));
  EXPECT_EQ(context_->all<std::int64_t>("end", "empty"), Numbers{3});
  // A run that is extended has had its warning.
  ASSERT_EQ(run("simulate", simulate_arguments(path, 4, "cache", 0, false)), host::kDone);
  EXPECT_EQ(context_->warnings, Texts());
  EXPECT_EQ(context_->all<std::int64_t>("end", "empty"), Numbers{2});

  const std::string late = replaced(kGood, R"("parameters": {"density": 1, "temperature": 1})",
                                    R"("keyframes": {"parameters.density": [[1, 0], [2, 1]]})");
  ASSERT_EQ(run("simulate", simulate_arguments(scene(late), 4)), host::kDone);
  EXPECT_EQ(context_->warnings, Texts());
  EXPECT_EQ(context_->all<std::int64_t>("end", "empty"), Numbers{2});
  EXPECT_FALSE(contains(context_->results.at(0), "empty"));

  // The gas is in a channel that the frames don't hold.
  const std::string unseen = replaced(replaced(kGood, R"("density": 1,)", ""), R"("smoke_channel")",
                                      R"("cache_temperature": false, "smoke_channel")");
  ASSERT_EQ(run("simulate", simulate_arguments(scene(unseen), 2)), host::kDone);
  EXPECT_EQ(context_->all<std::int64_t>("end", "empty"), Numbers{3});
}

// Two frames of fast gas are few; without buoyancy only the source pushes.
TEST_F(Warnings, ReportHowManySubstepsWereMissing) {
  const std::string still =
      replaced(kGood, "\"buoyancy_temperature\": 600", "\"buoyancy_temperature\": 0");
  const auto result = [&](const std::string& speed, int last) {
    const std::string fast =
        replaced(still, R"("density": 1,)", R"("density": 1, "direction": [)" + speed + ", 0, 0],");
    EXPECT_EQ(run("simulate", simulate_arguments(scene(fast), last)), host::kDone);
    return context_->results.at(0);
  };
  EXPECT_FALSE(contains(result("1", 5), "substeps"));
  EXPECT_EQ(context_->all<std::int64_t>("end", "frames_beyond_cfl"), Numbers{0});
  EXPECT_FALSE(contains(result("250", 2), "substeps"));
  EXPECT_EQ(context_->all<std::int64_t>("end", "frames_beyond_cfl"), Numbers{2});
  // At least 10 voxels a frame at a CFL number of 2. The first frame has only the sources.
  const std::string text = result("250", 5);
  EXPECT_TRUE(contains(text, "; 5 frames needed up to ")) << text;
  EXPECT_TRUE(contains(text, " substeps, but max_substeps is 2")) << text;
  EXPECT_GE(context_->all<std::int64_t>("end", "substeps_wanted").at(0), 5);
}

TEST_F(Warnings, AreAllThatCheckReports) {
  const auto check = [&](const std::string& text) {
    return run("check", with({{"scene", scene(text)}}));
  };
  EXPECT_EQ(check(kGood), host::kDone);
  EXPECT_TRUE(context_->results.at(0).starts_with(
      R"(scene.json: volume "smoke": no problems found: 15 frames (0 to 14), 24 x 40 x 20 voxels)"));
  EXPECT_TRUE(context_->results[0].ends_with(", cache " + folder_.file("scene.smoke.cache")));

  EXPECT_EQ(check(kOutside), host::kFailed);
  EXPECT_EQ(context_->all<std::string>("warning", "object"), Texts{"ball"});
  EXPECT_EQ(context_->all<std::string>("warning", "parameter"), Texts{"position"});
  EXPECT_EQ(context_->all<std::string>("warning", "text"), context_->results);
  EXPECT_EQ(context_->all<std::int64_t>("end", "warnings"), Numbers{1});

  // Every volume is checked. The second one is far from the ball, and locked.
  const std::string two = replaced(kGood, R"({"type": "mesh")",
                                   R"({"type": "null", "children": [{"type": "volume",
    "name": "far", "position": [900, 0, 0], "parameters": {"cache_lock": true}}]},
    {"type": "mesh")");
  EXPECT_EQ(check(two), host::kFailed);
  EXPECT_EQ(context_->all<std::string>("volume", "object"), (Texts{"smoke", "far"}));
  EXPECT_EQ(context_->all<std::string>("warning", "parameter"), (Texts{"position", "cache_lock"}));

  EXPECT_EQ(check(replaced(kGood, "\"voxel_size\": 1", "\"voxel_size\": 0")), host::kBadInput);
  EXPECT_EQ(check(replaced(kGood, "[24, 40, 20]", "[1e9, 40, 20]")), host::kBadInput);
  EXPECT_EQ(std::distance(test::fs::directory_iterator(folder_.file(".")), {}), 1)
      << "a cache was made";
}

}  // namespace
}  // namespace nbx
