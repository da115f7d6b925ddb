// Caches as a whole: which frames are valid and why the others aren't, branches, and what changes
// or removes a cache.
#include <cmath>

#include "C4D/plugin_fixture.h"
#include "cache/cache_directories.h"
#include "cache/cache_notes.h"

namespace nbx {
namespace {

namespace fs = std::filesystem;
using test::replaced;
using Strings = std::vector<std::string>;

const std::string kScene = replaced(
    replaced(test::read_file(NBX_C4D_DATA "/fire.json"), "TAG", R"("parameters": {"fuel": 1})"),
    "VALUES",
    R"("vorticity": 5, "cache_density": true, "smoke_density": 1, "save_state_every": 2)");
const std::string kPlain = replaced(kScene, "KEYS", "");

class CacheCommand : public test::PluginFixture {
 protected:
  /// Frames 0 to 5 of the scene, which saves its state at frames 2, 4 and 5.
  std::string simulated(const std::string& text = kPlain) {
    fs::copy_file(NBX_SCENES "/meshes/sphere.obj", folder_.file("ball.obj"),
                  fs::copy_options::overwrite_existing);
    const std::string file = edited(text);
    EXPECT_EQ(run("simulate", simulate_arguments(file, 5)), host::kDone);
    return folder_.file("cache");
  }
  std::string edited(const std::string& text) {
    std::string whole = text;
    for (int i = 0; i < 2; ++i) whole = replaced(whole, "SPHERE", folder_.file("ball.obj"));
    return scene(whole);
  }
  int cache(const std::string& action, const std::string& what, const std::string& more = "",
            const std::string& flag = "", const std::string& value = "") {
    auto arguments = with({{"action", action}, {"path", what}});
    if (!more.empty()) arguments.Add("argument", more);
    if (!value.empty()) arguments.Add(flag, value);
    if (value.empty() && !flag.empty()) arguments.AddFlag(flag);
    return run("cache", arguments);
  }
  /// A letter for each frame: valid, stale, missing, damaged.
  std::string explain(int last = 5) {
    auto arguments = simulate_arguments(folder_.file("scene.json"), last);
    arguments.Add("action", "explain");
    arguments.Add("path", folder_.file("scene.json"));
    const int code = run("cache", arguments);
    for (const std::string& error : context_->errors) ADD_FAILURE() << error;
    std::string letters;
    for (const std::string& state : context_->all<std::string>("frame", "state"))
      letters += state[0];
    EXPECT_EQ(code, letters.find_first_not_of('v') == letters.npos ? host::kDone : host::kFailed);
    return letters;
  }
  /// "vorticity: 5, 50 (gas)" for each change that explain has reported.
  Strings changes() {
    Strings lines;
    const auto field = [&](const char* name) { return context_->all<std::string>("change", name); };
    for (std::size_t i = 0; i < field("parameter").size(); ++i)
      lines.push_back(field("object")[i] + " " + field("parameter")[i] + ": " + field("before")[i] +
                      ", " + field("after")[i] + " (" + field("changes")[i] + ")");
    return lines;
  }
  bool refused(const std::string& text) {
    return context_->errors.size() == 1 && context_->errors[0].find(text) != std::string::npos;
  }
  Strings listed(const std::string& where, const std::string& field) {
    EXPECT_EQ(cache("list", where), host::kDone);
    return context_->all<std::string>("cache", field);
  }
};

TEST_F(CacheCommand, ExplainsFramesByWhatHasChangedSince) {
  const std::string file = simulated();
  const auto keys = [](const std::string& text) {
    return replaced(kScene, "KEYS", "\"parameters." + text + ",");
  };
  const std::string late = replaced(
      keys(R"(vorticity": [[0, 5], [3, 5], [4, 50], [5, 5], [9, 5]])"), "\"vorticity\": 5, ", "");
  const struct {
    std::string text, frames;
    Strings changes;
  } cases[] = {
      {kPlain, "vvvvvv", {}},
      {replaced(kPlain, "\"vorticity\": 5", "\"vorticity\": 50"),
       "ssssss",
       {"fire vorticity: 5, 50 (gas)"}},
      {late, "vvvvss", {"fire vorticity: 5, 50 (gas)"}},
      {keys(R"(mask_solid": [[0, false], [3, true], [4, false]])"),
       "vvvsvv",
       {"fire mask_solid: false, true (frames)"}},
      {replaced(kPlain, "\"smoke_density\": 1", "\"smoke_density\": 3"),
       "vvvvvv",
       {"fire smoke_density: 1, 3 (picture)"}},
      {replaced(kPlain, "\"cache_density\": true", "\"cache_density\": false"),
       "ssssss",
       {"fire cache_density: true, false (frames)"}},
      {replaced(kPlain, "\"fuel\": 1}", "\"fuel\": 2}"), "ssssss", {"log fuel: 1, 2 (gas)"}},
      {replaced(kPlain, R"("vorticity": 5)", R"("vorticity": 5, "cache_direct": true)"),
       "vvvvvv",
       {}}};
  for (const auto& [text, frames, expected] : cases) {
    edited(text);
    EXPECT_EQ(explain(), frames);
    EXPECT_EQ(changes(), expected);
  }
  // Without a saved scene, the states tell that it changed after frame 2.
  edited(late);
  fs::remove(file + "/Autosave.c4d");
  EXPECT_EQ(explain(), "vvvsss");
  edited(replaced(kPlain, "\"start\": 0", "\"start\": -1"));
  EXPECT_EQ(explain(), "vvvvvv") << "the frames that are asked for begin at 0";
  // Shapes, which only states know.
  const std::string ball = test::read_file(folder_.file("ball.obj"));
  std::ofstream(folder_.file("ball.obj")) << replaced(ball, "\nv ", "\nv 1");
  edited(kPlain);
  EXPECT_EQ(explain(), "ssssss");
  EXPECT_EQ(context_->all<std::string>("change", "parameter"), (Strings{"shape", "shape"}));
}

TEST_F(CacheCommand, ExplainsMissingDamagedAndLeftFrames) {
  const std::string file = simulated();
  const auto frames = frame_files();
  fs::remove(frames[1]);
  fs::resize_file(frames[2], fs::file_size(frames[2]) - 9);
  std::ofstream(file + "/StaleFrames.json") << R"({"stale": [[4, 4]]})";
  EXPECT_EQ(explain(6), "vmdvsvm");
  EXPECT_EQ(context_->all<std::string>("frame", "reason").back(), "an earlier run has left it");
  for (const char* field : {"valid", "stale", "missing", "damaged"})
    EXPECT_EQ(context_->all<std::int64_t>("end", field).at(0), *field == 'v'   ? 3
                                                               : *field == 'm' ? 2
                                                                               : 1);
}

// The frames before come from the first scene. The saved scene is that of the second run.
TEST_F(CacheCommand, ExplainsRunsThatContinueWithAnotherScene) {
  simulated();
  const std::string other = replaced(kPlain, "\"vorticity\": 5", "\"vorticity\": 50");
  auto arguments = simulate_arguments(edited(other), 5);
  arguments.Add("continue", "4");
  ASSERT_EQ(run("simulate", arguments), host::kDone);
  EXPECT_EQ(explain(), "ssssss");
  edited(kPlain);
  EXPECT_EQ(explain(), "vvvvvs");
}

TEST_F(CacheCommand, BranchesShareFramesAndContinue) {
  const std::string file = simulated();
  ASSERT_EQ(cache("branch", file, "4"), host::kDone);
  EXPECT_EQ(context_->results.size(), 2u);
  EXPECT_EQ(context_->all<std::string>("branched", "states"), Strings{"2, 4"});
  ASSERT_EQ(cache("branch", folder_.file("cache.001"), "3", "name", "deep"), host::kDone);
  EXPECT_TRUE(context_->results.at(1).starts_with("to continue from frame 2, the last one"));
  EXPECT_TRUE(context_->results.at(2).starts_with("frame 3 has no state"));
  EXPECT_EQ(listed(folder_.path(), "name"), (Strings{"cache", "cache.001", "deep"}));
  EXPECT_EQ(context_->all<std::string>("cache", "origin"), (Strings{"cache", "cache.001"}));
  EXPECT_EQ(context_->all<std::string>("cache", "frames"), (Strings{"0-5", "0-4", "0-3"}));
  EXPECT_EQ(context_->all<std::string>("cache", "version"), Strings(3, "1.0"));
  EXPECT_TRUE(context_->results.at(2).starts_with("    deep: frames 0-3, "));
  EXPECT_EQ(context_->all<std::int64_t>("cache", "shared_bytes").at(1),
            context_->all<std::int64_t>("cache", "bytes").at(1));

  auto arguments = simulate_arguments(folder_.file("scene.json"), 5, "cache.001", 0, false);
  arguments.AddFlag("continue");
  ASSERT_EQ(run("simulate", arguments), host::kDone);
  EXPECT_EQ(context_->all<std::int64_t>("start", "first"), std::vector<std::int64_t>{5});
  for (const int frame : {4, 5})
    EXPECT_TRUE(test::read_file(frame_files()[frame]) ==
                test::read_file(frame_files("cache.001")[frame]));
  EXPECT_EQ(fs::hard_link_count(frame_files()[3]), 3u);

  EXPECT_EQ(cache("branch", file, "6"), host::kBadInput);
  EXPECT_TRUE(refused("has no frame 6 of its last run: it has frames 0-5"));
  EXPECT_EQ(cache("branch", file, "4", "name", "deep"), host::kBadInput);
  EXPECT_TRUE(refused("deep exists"));
  EXPECT_EQ(cache("branch", file, "x"), host::kBadInput);

  // A branch follows its origin's name, and survives its end.
  ASSERT_EQ(cache("rename", folder_.file("cache.001"), "first"), host::kDone);
  EXPECT_EQ(read_cache_notes(folder_.file("deep")).origin, (CacheOrigin{"first", 3}));
  ASSERT_EQ(cache("remove", folder_.file("first"), "", "yes"), host::kDone);
  EXPECT_EQ(listed(folder_.path(), "name"), (Strings{"cache", "deep"}));
  EXPECT_EQ(run("verify", with({{"path", folder_.file("deep")}})), host::kDone);
}

TEST_F(CacheCommand, AsksBeforeItRemovesAndRefusesWhatIsLocked) {
  const auto arguments = simulate_arguments(scene(kPlain), 1, "");
  ASSERT_EQ(run("simulate", arguments), host::kDone);
  const std::string file = folder_.file("scene.fire.cache"), text = folder_.file("scene.json");
  fs::create_directories(folder_.file("other.cache"));
  std::ofstream(folder_.file("other.cache/x.bcf")) << "x";
  EXPECT_EQ(listed(text, "name"), Strings{"scene.fire.cache"});
  EXPECT_EQ(cache("lock", text), host::kDone);
  EXPECT_EQ(context_->all<std::string>("locked", "directory"), Strings{file});
  EXPECT_EQ(cache("remove", file, "", "yes"), host::kFailed);
  EXPECT_TRUE(refused("is locked: unlock it first"));
  EXPECT_EQ(run("simulate", arguments), host::kFailed);
  EXPECT_EQ(cache("unlock", file), host::kDone);
  EXPECT_FALSE(cache_locked(file));

  std::ofstream(file + "/notes.txt") << "mine";
  EXPECT_EQ(cache("remove", file, "", "yes"), host::kFailed);
  EXPECT_TRUE(refused("contains notes.txt"));
  fs::remove(file + "/notes.txt");
  EXPECT_EQ(cache("remove", file), host::kBadInput);
  EXPECT_TRUE(refused("give --yes"));
  std::string question;
  const auto answering = [&](bool yes) {
    prepare_context = [&, yes](test::RecordingContext& context) {
      context.on_ask = [&, yes](const std::string& asked) { return question = asked, yes; };
    };
    return cache("remove", text);
  };
  EXPECT_EQ(answering(false), host::kFailed);
  EXPECT_TRUE(question.starts_with("Remove " + file + " with 2 frames, "));
  EXPECT_EQ(frame_files("scene.fire.cache").size(), 2u);
  EXPECT_EQ(cache("rename", file, "a/b"), host::kBadInput);
  EXPECT_EQ(cache("rename", file, "other.cache"), host::kBadInput);
  EXPECT_TRUE(refused("other.cache exists: give another name"));
  EXPECT_EQ(answering(true), host::kDone);
  EXPECT_FALSE(fs::exists(file));
  EXPECT_EQ(cache("remove", text), host::kBadInput);
  EXPECT_EQ(cache("lock", NBX_SCENES "/meshes"), host::kBadInput);
  EXPECT_TRUE(refused("isn't a cache"));
  EXPECT_EQ(cache("lock", text, "5"), host::kBadInput);
}

// A probe that reaches the end is the run itself. It leaves the cache and its lock alone.
TEST_F(CacheCommand, AForecastOfAShortRunIsWhatTheRunTakes) {
  const std::string file = simulated(), left = folder_.file("scene.fire.cache");
  ASSERT_TRUE(set_cache_lock(file, true));
  std::uintmax_t bytes = 0;
  for (const std::string& frame : frame_files()) bytes += fs::file_size(frame);
  auto arguments = simulate_arguments(folder_.file("scene.json"), 5, "");
  ASSERT_EQ(run("forecast", arguments), host::kDone);
  EXPECT_EQ(context_->all<std::int64_t>("forecast", "factor"),
            (std::vector<std::int64_t>{1, 2, 3, 4, 8}));
  EXPECT_EQ(context_->all<double>("forecast", "bytes_run_length").at(0), bytes);
  EXPECT_GT(context_->all<double>("forecast", "bytes_raw").at(0), bytes);
  EXPECT_EQ(context_->all<std::int64_t>("forecast", "frames_probed").at(0), 6);
  EXPECT_FALSE(fs::exists(left));

  EXPECT_FALSE(context_->all<bool>("forecast", "from_cache").at(0));
  arguments.Add("cache", file);
  ASSERT_EQ(run("forecast", arguments), host::kDone);
  EXPECT_TRUE(context_->all<bool>("forecast", "from_cache").at(0));
  EXPECT_EQ(context_->all<double>("forecast", "bytes_run_length").at(0), bytes);
  EXPECT_NEAR(context_->all<double>("forecast", "seconds").at(0),
              read_cache_notes(file).runs.at(0).seconds, 1e-9);
  EXPECT_GT(context_->all<double>("forecast", "seconds").at(1), 0);

  const std::string locked =
      replaced(kPlain, R"("vorticity": 5)", R"("vorticity": 5, "cache_lock": true)");
  arguments = simulate_arguments(edited(locked), 5, "");
  arguments.Add("probe", "0");
  ASSERT_EQ(run("forecast", arguments), host::kDone);
  EXPECT_EQ(context_->all<std::int64_t>("forecast", "frames_probed").at(0), 1);
  const double foretold = context_->all<double>("forecast", "bytes_run_length").at(0);
  EXPECT_LT(std::abs(std::log(foretold / static_cast<double>(bytes))), std::log(3));
  EXPECT_EQ(explain(), "vvvvvv");
}

}  // namespace
}  // namespace nbx
