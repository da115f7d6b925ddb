// Renders that simulate as they go, and what may not be simulated over by any road.
#include <set>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/plugin_fixture.h"
#include "host/render/render_command.h"

namespace nbx {
namespace {

namespace fs = std::filesystem;
using test::replaced;

const char* const kVolume = R"({"type": "volume", "name": "v", "parameters": {
    "size": [8, 8, 8], "voxel_size": 1, "simulate_density": true, "simulate_on_render": true}},)";
const char* const kBall = R"({"type": "mesh", "scale": [2, 2, 2], "parameters": {"file": "SPHERE"},
    "tags": [{"type": "emitter", "parameters": {"density": 1}}]})";

class SimulateOnRender : public test::PluginFixture {
 protected:
  /// Writes the scene. Its volumes have no cache_name unless one is given.
  void write(const std::string& volumes = kVolume, const std::string& document = R"("end": 99)") {
    path_ = scene("{" + document + ", \"objects\": [" + volumes + kBall + "]}");
  }
  int render(int first, int last, const std::vector<std::string>& flags = {}) {
    auto arguments = simulate_arguments(path_, last, "", first, false);
    arguments.Add("output", folder_.file("picture-####.png"));
    arguments.Add("size", "2x2");
    for (const char* one : {"samples", "threads"}) arguments.Add(one, "1");
    for (const std::string& flag : flags)
      flag == "empty" ? arguments.Add("missing", flag) : arguments.AddFlag(flag);
    host::RenderCommand command("test");
    return run(command, arguments);
  }
  std::vector<int> frames(const std::string& cache = "scene.v.cache") {
    std::vector<int> numbers;
    for (const auto& [frame, name] : list_frames(folder_.file(cache))) numbers.push_back(frame);
    return numbers;
  }
  std::set<std::string> bytes() {
    std::set<std::string> all;
    for (const auto& entry : fs::directory_iterator(folder_.file("scene.v.cache")))
      if (entry.path().extension() != ".lck") all.insert(test::read_file(entry.path()));
    return all;
  }
  bool told(const std::vector<std::string>& lines, const std::string& text) {
    return lines.size() == 1 && lines[0].find(text) != std::string::npos;
  }

  std::string path_;
};

using Frames = std::vector<int>;

// About the first frame that seconds in floating point miss: 29 / 25 * 25 is below 29.
TEST_F(SimulateOnRender, NoFrameIsLeftOutAtAnyRate) {
  for (const auto& [text, rate] :
       {std::pair{"24", 24.0}, {"25", 25.0}, {"30", 30.0}, {"60", 60.0}}) {
    int n = 10;
    while (n < 500 && std::trunc(n / rate * rate) == n) ++n;
    write(kVolume, "\"fps\": " + std::string(text) + ", \"start\": " + std::to_string(n - 1) +
                       ", \"end\": " + std::to_string(n));
    EXPECT_EQ(render(n - 1, n + 1, {"empty"}), host::kDone) << text;
    EXPECT_EQ(frames(), (Frames{n - 1, n})) << text;
    fs::remove_all(folder_.file("scene.v.cache"));
  }
}

TEST_F(SimulateOnRender, PicturesShowTheFrameOfTheirTime) {
  write(kVolume, "\"start\": 10, \"end\": 13");
  EXPECT_EQ(render(13, 13), host::kFailed) << "a single picture isn't simulated";
  EXPECT_EQ(render(11, 13), host::kDone);
  EXPECT_EQ(frames(), (Frames{10, 11, 12, 13}));
  write(
      replaced(kVolume, "\"simulate_on_render\": true", R"("frame_stride": 2, "frame_offset": 1)"),
      "\"start\": 10, \"end\": 13");
  EXPECT_EQ(render(11, 12), host::kDone);  // cached frames 11 and 13
  for (const auto& [shown, cached] : {std::pair{10, 9}, {13, 15}}) {
    EXPECT_EQ(render(shown, shown), host::kFailed);
    EXPECT_TRUE(told(context_->errors, "frame " + std::to_string(cached) + " is not in the cache"));
  }
}

TEST_F(SimulateOnRender, EarlierRunsAndLockedCachesStayAsTheyAre) {
  write();
  ASSERT_EQ(render(0, 2), host::kDone);
  const auto first = bytes();
  write(replaced(kVolume, "\"voxel_size\": 1", R"("voxel_size": 1, "time_scale": 0.5)"));
  EXPECT_EQ(render(0, 2), host::kFailed);
  EXPECT_TRUE(told(context_->errors, "scene.json: volume \"v\": "));
  EXPECT_TRUE(told(context_->errors, "--overwrite"));
  EXPECT_EQ(render(0, 2, {"new-cache"}), host::kDone);
  EXPECT_EQ(frames("scene.v.001"), (Frames{0, 1, 2}));
  EXPECT_EQ(bytes(), first);
  EXPECT_EQ(render(0, 2, {"overwrite"}), host::kDone);
  // Frames that a shorter run leaves are drawn with one warning.
  write(replaced(kVolume, "simulate_on_render\": true", "simulate_on_render\": false"));
  EXPECT_EQ(run("simulate", simulate_arguments(path_, 0, "")), host::kDone);
  EXPECT_EQ(render(0, 2), host::kDone);
  EXPECT_TRUE(
      told(context_->warnings, "frame 1 belongs to an earlier run: simulate frames 1-2 of"));
  write(replaced(kVolume, "\"voxel_size\": 1", R"("voxel_size": 1, "time_scale": 0.5)"));
  EXPECT_EQ(render(0, 2, {"overwrite"}), host::kDone);
  EXPECT_FALSE(fs::exists(folder_.file("scene.v.cache/StaleFrames.json")));
  // No more than the run's own warnings about the scene, which the render passes on.
  ASSERT_EQ(context_->warnings.size(), 2u);
  EXPECT_NE(context_->warnings[0].find("pictures show nothing"), std::string::npos);
  const auto second = bytes();
  EXPECT_NE(second, first);

  // The panel finds the cache next to the scene, and locks it.
  write();
  const auto document = context_->LoadDocument({path_});
  host::BaseObject* const volume = context_->FindObject(*document, kVolumeObject);
  EXPECT_EQ(volume->GetParameter(OVOLUME.INFO_FRAME_COUNT),
            host::ParameterValue(std::string("3F")));
  volume->SetParameter(OVOLUME.CACHE_LOCK, true);
  for (const char* lock : {"the file", "the parameter"}) {
    EXPECT_EQ(render(0, 2, {"overwrite"}), host::kDone) << lock;
    EXPECT_TRUE(told(context_->warnings, "locked")) << lock;
    EXPECT_EQ(run("simulate", simulate_arguments(path_, 2, "scene.v.cache")), host::kFailed);
    EXPECT_TRUE(told(context_->errors, "locked")) << lock;
    EXPECT_EQ(bytes(), second) << lock;
    volume->SetParameter(OVOLUME.CACHE_LOCK, false);
    write(replaced(kVolume, "\"voxel_size\": 1", R"("voxel_size": 1, "cache_lock": true)"));
  }
}

TEST_F(SimulateOnRender, EachVolumeNeedsItsOwnCache) {
  // One after the other, without those that are off, until an interrupt.
  const std::string off = replaced(kVolume, "\"name\": \"v\"", R"("enabled": false, "name": "u")");
  write(off + kVolume + replaced(kVolume, "\"v\"", "\"w\""));
  auto all = simulate_arguments(path_, 3, "");
  all.AddFlag("all");
  prepare_context = [](test::RecordingContext& context) {
    context.on_event = [&](const std::string& event) {
      if (event == "frame") context.interrupt_and_wait(1);
    };
  };
  EXPECT_EQ(run("simulate", all), host::kInterrupted);
  EXPECT_EQ(frames(), Frames{0});
  EXPECT_EQ(frames("scene.w.cache"), Frames());
  EXPECT_FALSE(fs::exists(folder_.file("scene.u.cache")));
  prepare_context = {};
  fs::remove_all(folder_.file("scene.v.cache"));

  const std::string unseen = replaced(kVolume, "\"voxel_size\": 1",
                                      R"("voxel_size": 1, "smoke_channel": "none",
                                         "fire_channel": "none")");
  write(kVolume + replaced(unseen, "\"v\"", "\"w\""));
  EXPECT_EQ(render(0, 1), host::kDone);
  EXPECT_EQ(frames(), (Frames{0, 1}));
  EXPECT_EQ(frames("scene.w.cache"), (Frames{0, 1})) << "simulated though no picture shows it";

  // Two of one name, and one that only shows what the other simulates.
  const auto before = bytes();
  const std::string shows =
      replaced(kVolume, "\"simulate_on_render\": true", "\"cache_name\": \"link\"");
  fs::create_directory_symlink(folder_.file("scene.v.cache"), folder_.file("link"));
  for (const auto& [name, other] :
       {std::pair{"v", std::string(kVolume)}, {"w", replaced(shows, "\"v\"", "\"w\"")}}) {
    write(other + kVolume);
    EXPECT_EQ(render(0, 1, {"overwrite"}), host::kBadInput);
    EXPECT_TRUE(told(context_->errors, "scene.json: volume \"v\": its cache "));
    EXPECT_TRUE(told(context_->errors, "that of volume \"" + std::string(name) + "\": give each"));
    auto arguments = simulate_arguments(path_, 1, "");
    EXPECT_EQ(run("simulate", arguments), host::kBadInput);
    EXPECT_TRUE(told(context_->errors, "there are 2 volume objects, \"" + std::string(name) +
                                           "\", \"v\": give --object NAME to simulate one, or"));
    arguments.AddFlag("all");
    EXPECT_EQ(run("simulate", arguments), host::kBadInput);
    ASSERT_EQ(context_->errors.size(), 2u) << "one for each volume";
    EXPECT_NE(context_->errors[0].find("that of volume \"v\": give each"), std::string::npos);
    arguments.Add("cache", folder_.file("cache"));
    EXPECT_EQ(run("simulate", arguments), host::kBadInput);
    EXPECT_TRUE(told(context_->errors, "--all and --cache can't be used together"));
    EXPECT_EQ(bytes(), before);
  }
}

TEST_F(SimulateOnRender, FailedRunsDontStartAgainAndInterruptsEndThem) {
  write(replaced(kVolume, "\"voxel_size\": 1", "\"voxel_size\": 1e-12"));
  EXPECT_EQ(render(2, 5, {"empty"}), host::kDone);
  EXPECT_EQ(log_.count("Failed to prepare sim"), 1);
  EXPECT_NE(context_->warnings.at(1).find("frame 2 is not in"), std::string::npos)
      << "the document isn't at the picture's time: " << context_->warnings[1];

  write();
  prepare_context = [](test::RecordingContext& context) {
    context.on_progress = [&context](const std::string& line) {
      if (line.find("Simulating 0 %") != std::string::npos) context.interrupts = 2;
    };
  };
  EXPECT_EQ(render(40, 41, {"overwrite"}), host::kInterrupted);
  EXPECT_EQ(frames(), Frames{0});
}

}  // namespace
}  // namespace nbx
