// The whole road through the plug-in: a scene goes in, frames and pictures come out.
#include <map>
#include <optional>
#include <set>
#include <thread>

#include <dlfcn.h>
#include <unistd.h>

#include "C4D/plugin_fixture.h"
#include "cache/cache_info.h"
#include "cache/cache_registry.h"
#include "support/full_disk.h"

namespace nbx {
namespace {

namespace fs = std::filesystem;
using test::replaced;

// A ball of smoke above a closed floor, 24 x 40 x 20 voxels.
const std::string kScene = test::read_file(NBX_C4D_DATA "/smoke.json");

class Plugin : public test::PluginFixture {
 protected:
  std::string scene(const std::string& text = kScene) { return PluginFixture::scene(text); }
  int simulate(int last, const std::string& text = kScene, const std::string& cache = "cache") {
    return run("simulate", simulate_arguments(scene(text), last, cache));
  }
  std::vector<std::int64_t> numbers(const std::string& event, const std::string& field) {
    return context_->all<std::int64_t>(event, field);
  }
};

using Numbers = std::vector<std::int64_t>;

/// Height of the center of a grid's content in domain cells, and its sum.
std::pair<double, double> height_and_sum(const std::string& path, int type) {
  SimFrame frame;
  EXPECT_TRUE(frame.load(path));
  const FieldHandle grid = frame.grid(type);
  double height = 0, sum = 0;
  test::each_cell(grid->dims(), 0, [&](int x, int y, int z) {
    sum += (*grid)(x, y, z);
    height += (frame.grids.at(type).offset[1] + y) * (*grid)(x, y, z);
  });
  return {height / sum, sum};
}

TEST_F(Plugin, SceneBecomesFramesAndAPicture) {
  auto on_one = simulate_arguments(scene(), -1);
  on_one.Add("threads", "1");
  ASSERT_EQ(run("simulate", on_one), host::kDone);
  EXPECT_TRUE(context_->errors.empty());
  EXPECT_EQ(numbers("frame", "frame").size(), 15u);
  const auto files = frame_files();
  ASSERT_EQ(files.size(), 15u);

  // Any number of threads gives the same bytes.
  auto on_three = simulate_arguments(scene(), -1, "on three");
  on_three.Add("threads", "3");
  ASSERT_EQ(run("simulate", on_three), host::kDone);
  for (std::size_t i = 0; i < 15; ++i)
    EXPECT_EQ(test::read_file(files[i]), test::read_file(frame_files("on three").at(i))) << i;

  // The smoke starts at the ball's height, and rises.
  const auto [start, sum] = height_and_sum(files.front(), kGridDensity);
  EXPECT_NEAR(start, 7.5, 0.5);
  EXPECT_GT(sum, 100);
  const auto [end, more] = height_and_sum(files.back(), kGridDensity);
  EXPECT_GT(end, start + 2);
  EXPECT_GT(more, 1.5 * sum);
  // No gas moves through the floor.
  SimFrame frame;
  ASSERT_TRUE(frame.load(files.back()));
  EXPECT_EQ(frame.frameTime.frame(), 14);
  ASSERT_EQ(frame.grids.at(kGridVelocityY).offset[1], -1);
  const FieldHandle v = frame.grid(kGridVelocityY);
  EXPECT_GT(v->nx(), 3);
  for (int z = 1; z < v->nz() - 1; ++z)
    for (int x = 1; x < v->nx() - 1; ++x) ASSERT_EQ((*v)(x, 1, z), 0);

  EXPECT_EQ(run("info", with({{"path", folder_.file("cache")}, {"values", ""}})), host::kDone);
  EXPECT_EQ(numbers("cache", "frames"), Numbers{15});
  EXPECT_EQ(numbers("grid", "nans"), Numbers(15 * 5));

  const std::string png = folder_.file("smoke.png");
  EXPECT_EQ(run("slice", with({{"frame", files.back()}, {"output", png}, {"scale", "2"}})),
            host::kDone);
  const Vec3i dims = frame.grids.at(kGridDensity).dims;
  EXPECT_EQ(QImage(QString::fromStdString(png)).size(), 2 * QSize(dims[0] - 2, dims[1] - 2));
}

// A rate, whatever the substeps: every cell on the surface grows by five times its volume a second.
TEST_F(Plugin, ExpandingSourcesPushTheGas) {
  const std::string text =
      replaced(kScene, R"({"density": 1, "temperature": 1})", R"({"expansion": 5})");
  ASSERT_EQ(simulate(2, replaced(text, "\"max_substeps\": 2",
                                 R"("max_substeps": 2, "source_substeps": 7)")),
            host::kDone);
  EXPECT_NEAR(context_->all<double>("frame", "largest_divergence").back(), 4.525, 0.525);
}

// At twice the pace the gas rises in four frames as far as it does in eight.
TEST_F(Plugin, TimeScaleSetsTheSpeedOfTheGas) {
  const auto rise = [&](const std::string& scale, int last) {
    const std::string pace = "\"max_substeps\": 8, \"time_scale\": " + scale;
    EXPECT_EQ(simulate(last, replaced(kScene, "\"max_substeps\": 2", pace)), host::kDone);
    return height_and_sum(frame_files().back(), kGridDensity).first -
           height_and_sum(frame_files().front(), kGridDensity).first;
  };
  const double whole = rise("1", 8), fast = rise("2", 4);
  EXPECT_GT(whole, 0.5);
  EXPECT_NEAR(fast, whole, 0.1 * whole);
}

// A burning ball against the open face at the high end of z.
TEST_F(Plugin, FireIsMeasuredAndItsLossesAreReported) {
  ASSERT_EQ(simulate(4, test::read_file(NBX_C4D_DATA "/burning_ball.json")), host::kDone);
  const auto& seen = *context_;
  EXPECT_NE(seen.results.at(0).find("; gas leaves through z+ from frame 0"), std::string::npos)
      << seen.results[0];
  EXPECT_EQ(seen.all<std::vector<std::string>>("frame", "touches").back(),
            std::vector<std::string>{"z+"});
  for (const char* channel : {"mass_fuel", "mass_burn", "mass_temperature", "mass_density"})
    EXPECT_GT(seen.all<double>("frame", channel).at(4), 0) << channel;
  // Where a substep's worth of fuel burns, its tenth of volume appears: 0.2 of it in a frame.
  EXPECT_NEAR(seen.all<double>("frame", "largest_divergence").back(), 0.1 * 0.2 * 25, 0.05);
}

// The scene is large enough that progress is shown within a frame. The interrupt comes in a substep
// that isn't the frame's last. One lets the frame end, the second drops it, and so does the end of
// the host.
TEST_F(Plugin, InterruptsAndShutdownEndTheRunAtTheFrameOrAtOnce) {
  for (int interrupts : {1, 2, 0}) {
    std::size_t whole_frames = 0;
    std::atomic<bool> shown = false;
    prepare_context = [&](test::RecordingContext& c) {
      c.on_progress = [&, interrupts](const std::string& line) {
        if (shown || line.find("substep 1 of 2") == std::string::npos) return;
        shown = true;
        c.interrupt(interrupts);
        whole_frames = c.all<std::int64_t>("frame", "frame").size();
      };
      c.on_wait = [&, interrupts] {
        if (shown && interrupts == 0) module_.Send(host::kMessageShutdown);
      };
    };
    const std::string cache = "interrupted" + std::to_string(interrupts);
    EXPECT_EQ(simulate(14, replaced(kScene, "\"voxel_size\": 1", "\"voxel_size\": 0.25"), cache),
              host::kInterrupted);
    EXPECT_EQ(context_->all<std::string>("end", "outcome"),
              std::vector<std::string>{"interrupted"});
    const auto files = frame_files(cache);
    EXPECT_EQ(files.size(), whole_frames + (interrupts == 1 ? 1 : 0));
    // The saved state is that of the last frame, and half a frame leaves none.
    const std::string state = folder_.file(cache + "/LastSimState.bcf");
    ASSERT_EQ(fs::exists(state), interrupts == 1);
    if (interrupts == 1) {
      EXPECT_EQ(height_and_sum(state, kGridDensity), height_and_sum(files.back(), kGridDensity));
    }
    for (const std::string& file : files) EXPECT_TRUE(read_frame_file_info(file, true).good());
  }
  prepare_context = [](test::RecordingContext& c) { c.interrupt(2); };
  EXPECT_EQ(simulate(2, kScene, "prepared"), host::kInterrupted);
  EXPECT_EQ(context_->results, std::vector<std::string>{"interrupted: 0 frames"});
}

TEST_F(Plugin, CachesAreCheckedAndExported) {
  const std::string cache = folder_.file("cache"), out = folder_.file("out");
  const auto raw = with({{"path", cache}, {"output", out}, {"format", "raw"}});
  ASSERT_EQ(simulate(4), host::kDone);
  EXPECT_EQ(run("verify", with({{"path", cache}})), host::kDone);
  EXPECT_EQ(run("export", raw), host::kDone);
  const auto files = frame_files();
  SimFrame frame;
  ASSERT_TRUE(frame.load(files.at(4)));
  const FieldHandle density = frame.grid(kGridDensity);
  EXPECT_EQ(test::read_file(out + "/cache.0004.density.raw"),
            std::string(reinterpret_cast<const char*>(density->data()), 4 * density->count()));
  EXPECT_TRUE(fs::exists(out + "/cache.0000.json"));

  // A record damaged, a file cut, one whose writer never came to its end; a gap.
  std::fstream(files[0]).seekp(12 + 4 + 1).put(9);  // the codec of the first record
  fs::resize_file(files[1], fs::file_size(files[1]) - 1);
  std::fstream(files[2]).seekp(11).put(0);
  fs::remove(files[3]);
  EXPECT_EQ(run("verify", with({{"path", cache}})), host::kFailed);
  const auto damaged = context_->all<std::string>("damaged", "path");
  EXPECT_EQ(std::set<std::string>(damaged.begin(), damaged.end()),
            std::set<std::string>(files.begin(), files.begin() + 3));
  EXPECT_NE(context_->results[0].find("record 1 (density): Unknown codec"), std::string::npos);
  EXPECT_EQ(numbers("verified", "damaged"), Numbers{3});
  EXPECT_EQ(run("info", with({{"path", cache}})), host::kFailed);
  EXPECT_EQ(context_->all<std::vector<std::string>>("cache", "missing").at(0),
            std::vector<std::string>{"3"});
  EXPECT_EQ(run("export", raw), host::kFailed);
  // The cut file lacks nothing but its last trailer's end.
  EXPECT_EQ(numbers("exported", "frames"), Numbers{2});
  EXPECT_EQ(run("verify", with({{"path", out + "/none"}})), host::kBadInput);
}

// Frames go out as volumes and come back, with their numbers and their exact times.
TEST_F(Plugin, VolumesKeepTheirFramesAtAnyRate) {
  using Times = std::map<int, Fraction>;
  const auto times = [](double frames, const Fraction& length) {
    return normalize({frames * length.num, length.den});
  };
  for (const Fraction& length : {Fraction{2, 25}, Fraction{1001, 30000}, Fraction{1001, 24000}}) {
    const std::string made = folder_.file("made"), volumes = folder_.file("volumes");
    fs::create_directory(made);
    Times expected, at_twelve;
    for (int frame = -5; frame <= 41; ++frame) {
      SimFrame stored;
      const FieldHandle field = acquire_field({3, 3, 3});
      std::fill_n(field->data(), field->count(), 1.0f);
      stored.add(field, kGridDensity, {}, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
      stored.simTime = stored.frameTime = {expected[frame] = times(frame, length), length};
      at_twelve[frame] = times(frame, {2, 25});
      ASSERT_TRUE(getCache(made)->write_through(stored));
    }
    if (run("export", with({{"path", made}, {"output", volumes}})) != host::kDone)
      GTEST_SKIP() << context_->errors.at(0);  // a build without OpenVDB
    for (const bool other : {false, true}) {
      auto arguments = with({{"path", volumes}, {"cache", folder_.file("back")}});
      if (other) arguments.Add("fps", "12.5");
      EXPECT_EQ(run("import", arguments), host::kDone);
      Times back;
      for (const auto& [number, name] : list_frames(folder_.file("back")))
        back[number] = read_frame_file_info(folder_.file("back/" + name), false).frameTime.time;
      EXPECT_EQ(back, other ? at_twelve : expected);
      fs::remove_all(folder_.file("back"));
    }
    // A damaged file costs its frame, and only damaged ones are no volumes at all.
    int good = 47;
    for (const auto& file : fs::directory_iterator(volumes)) {
      std::ofstream(file.path()) << "no volume";
      if (--good > 0 && good < 46) continue;
      EXPECT_EQ(run("import", with({{"path", volumes}, {"cache", folder_.file("back")}})),
                good > 0 ? host::kFailed : host::kBadInput);
      EXPECT_EQ(list_frames(folder_.file("back")).size(), static_cast<std::size_t>(good));
      fs::remove_all(folder_.file("back"));
    }
    fs::remove_all(made), fs::remove_all(volumes);
  }
}

// By the options: the channels that are exported, and how many warnings there are.
TEST_F(Plugin, SolidsAreExportedOnDemand) {
  const std::string made = folder_.file("made"), out = folder_.file("out");
  fs::create_directory(made);
  SimFrame stored;
  const FieldHandle field = acquire_field({3, 3, 3});
  for (const int type : {kGridDensity, kGridVelocityX, kGridVelocityZ, kGridSolid}) {
    std::fill_n(field->data(), field->count(), type == kGridDensity ? 1e5f : 1e38f);
    if (type == kGridSolid) (*field)(1, 1, 1) = 1;
    stored.add(field, type, {}, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
  }
  ASSERT_TRUE(getCache(made)->write_through(stored));
  const auto raw = [&](const char* option, const char* value) {
    auto arguments = with({{"path", made}, {"output", out}, {"format", "raw"}, {option, value}});
    EXPECT_EQ(run("export", arguments), host::kDone);
    return test::read_file(out + "/made.0000.solid.raw");
  };
  EXPECT_EQ(raw("half", ""), "");
  const float limited[27] = {3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 1,
                             3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3};
  EXPECT_EQ(raw("solid", ""), std::string(reinterpret_cast<const char*>(limited), sizeof limited));

  using Channels = std::vector<std::string>;
  const struct {
    std::vector<std::pair<std::string, std::string>> options;
    Channels channels;
    std::size_t warnings;
  } cases[] = {{{}, {"density"}, 1},
               {{{"half", ""}, {"name", "velocity="}}, {"density"}, 1},
               {{{"half", ""}, {"solid", ""}}, {"density", "solid"}, 2},
               {{{"name", "solid=walls"}}, {"density", "walls"}, 1},
               {{{"name", "density="}}, {}, 1}};
  for (const auto& c : cases) {
    auto arguments = with({{"path", made}, {"output", out}});
    for (const auto& [name, value] : c.options) arguments.Add(name, value);
    run("export", arguments);
    if (context_->errors == Channels{"this build has no OpenVDB; use --format raw"}) GTEST_SKIP();
    EXPECT_EQ(context_->errors, Channels{});
    EXPECT_EQ(context_->warnings.size(), c.warnings);
    EXPECT_EQ(run("info", with({{"path", out + "/made.0000.vdb"}})), host::kDone);
    EXPECT_EQ(context_->all<std::string>("vdb_grid", "name"), c.channels);
  }
  std::ofstream(out + "/made.0000.vdb") << "no volume";
  EXPECT_EQ(run("info", with({{"path", out + "/made.0000.vdb"}})), host::kBadInput);
}

// From frame 6 on the folder is gone, or can't be written, or files can't grow as on a full disk:
// the log's neither, so that comes last.
TEST_F(Plugin, RunsSurviveTheDisk) {
  const std::string cache = folder_.file("cache"), moved = folder_.file("moved");
  fs::permissions(folder_.path(), fs::perms::all);
  std::optional<test::FileSizeLimit> limit;
  const auto become = [root = geteuid() == 0](uid_t user) {  // nobody stops root
    if (root && seteuid(user) != 0) ADD_FAILURE();
  };
  const struct {
    const char* name;
    std::function<void()> fault, mend;
  } cases[] = {
      {"gone", [&] { fs::rename(cache, moved); }, [&] { fs::rename(moved, cache); }},
      {"read-only",
       [&] {
         fs::permissions(cache, fs::perms(0505));
         become(65534);
       },
       [&] {
         become(0);
         fs::permissions(cache, fs::perms::owner_all);
       }},
      {"full", [&] { limit.emplace(fs::file_size(frame_files()[0])); }, [&] { limit.reset(); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    fs::remove_all(cache);
    prepare_context = [&](test::RecordingContext& context) {
      context.on_event = [&, frames = 0](const std::string& event) mutable {
        if (event != "frame" || ++frames != 6) return;
        while (frame_files().size() < 6 ||
               read_frame_file_info(frame_files()[5], false).grids.empty())
          std::this_thread::yield();
        c.fault();
      };
    };
    const int code = simulate(14);
    c.mend();
    EXPECT_EQ(code, host::kFailed);
    EXPECT_EQ(numbers("frame", "frame").size(), 15u);
    auto lost = numbers("lost", "frame");
    std::sort(lost.begin(), lost.end());  // a frame is given up when its slot is wanted
    EXPECT_EQ(lost, (Numbers{6, 7, 8, 9, 10, 11, 12, 13, 14}));
    EXPECT_EQ(numbers("end", "stored"), Numbers{6});
    ASSERT_EQ(context_->errors.size(), 9u);
    EXPECT_NE(context_->errors[0].find(" is not stored: "), std::string::npos);
    const auto files = frame_files();
    EXPECT_EQ(files.size(), 6u);
    for (const std::string& file : files) EXPECT_TRUE(read_frame_file_info(file, true).good());
  }
  EXPECT_TRUE(log_.contains("IOW: Failed to write file "));
  EXPECT_TRUE(log_.contains("IOW: NOT writing frame 14"));
}

TEST_F(Plugin, BadInputIsRefusedWithOneLineAndNothingWritten) {
  const std::string cache = folder_.file("cache"), path = scene(), text = test::read_file(path);
  const struct {
    const char *from, *to, *message;
  } cases[] = {
      {"\"voxel_size\": 1", "\"voxel_size\": 0", "voxel_size must be above 0"},
      {"\"voxel_size\": 1", "\"voxel_size\": -1", "voxel_size"},
      {"\"voxel_size\": 1", "\"voxel_size\": 1e-300", "a frame file can hold: voxel_size 0.021 "},
      {"\"voxel_size\": 1", "\"voxl_size\": 1", "voxel_size"},
      {"\"simulate_density\": true", "\"simulate_density\": \"yes\"", "simulate_density"},
      {"\"end\": 14", "\"end\": 14, \"preview_start\": 9, \"preview_end\": 3", "preview"},
      {"[24, 40, 20]", "[24000, 40000, 20]", "more than a frame file can hold: voxel_size 2.5 "},
      {"sphere.obj", "nothing.obj", "nothing.obj"},
  };
  for (const auto& c : cases) {
    std::ofstream(path) << replaced(text, c.from, c.to);
    EXPECT_EQ(run("simulate", simulate_arguments(path, -1)), host::kBadInput) << c.to;
    ASSERT_EQ(context_->errors.size(), 1u) << c.to;
    EXPECT_NE(context_->errors[0].find(c.message), std::string::npos) << context_->errors[0];
    EXPECT_EQ(context_->errors[0].find('\n'), std::string::npos);
    EXPECT_FALSE(fs::exists(cache)) << c.to;
  }

  auto strided = simulate_arguments(scene(), -1), device = strided;
  strided.AddFrames("frames", {0, 2, 4});
  device.Add("device", "7");
  EXPECT_EQ(run("simulate", strided), host::kBadInput);
  EXPECT_EQ(run("simulate", device), host::kBadInput);
  std::ofstream(cache) << "a file";
  EXPECT_EQ(simulate(-1), host::kBadInput);
  EXPECT_EQ(run("info", with({{"path", cache}})), host::kBadInput);
  EXPECT_EQ(run("slice", with({{"frame", cache}, {"output", folder_.file("a.png")}})),
            host::kBadInput);
  EXPECT_FALSE(fs::exists(folder_.file("a.png")));
  EXPECT_EQ(test::read_file(cache), "a file");
}

TEST(PluginEntry, LooksAtTheHostsVersion) {
  void* library = dlopen(NBX_PLUGIN, RTLD_NOW);
  ASSERT_NE(library, nullptr) << dlerror();
  const auto entry = reinterpret_cast<host::PluginEntry>(dlsym(library, "c4d_main"));
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry(host::kActionLoad, nullptr, nullptr, nullptr), -3);
  for (const auto& [version, loads, sets_up] :
       {std::tuple{11499, -3, -1}, {11500, 1, 1}, {11999, 1, 1}, {12000, 1, -1}}) {
    host::SmallHost small;
    const std::size_t commands = small.Commands().size();
    host::HostFunctions functions{version, &small};
    EXPECT_EQ(entry(host::kActionLoad, &functions, nullptr, nullptr), loads) << version;
    void* const set_up = reinterpret_cast<void*>(std::intptr_t{host::kMessageSetUp});
    EXPECT_EQ(entry(host::kActionMessage, set_up, nullptr, nullptr), sets_up) << version;
    if (sets_up < 0) {
      EXPECT_EQ(entry(host::kActionStart, nullptr, nullptr, nullptr), 0);
    }
    EXPECT_EQ(small.Commands().size(), commands);
    entry(host::kActionEnd, nullptr, nullptr, nullptr);
  }
  EXPECT_EQ(entry(host::kActionAskApi, nullptr, nullptr, nullptr), 3);
  EXPECT_EQ(entry(77, nullptr, nullptr, nullptr), -1);
  dlclose(library);
}

}  // namespace
}  // namespace nbx
