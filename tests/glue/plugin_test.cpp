// The whole road through the plug-in: a scene goes in, frames and pictures come out.
#include <QImage>
#include <map>
#include <optional>
#include <set>
#include <thread>

#include <dlfcn.h>
#include <unistd.h>

#include "C4D/volume_parameters.h"
#include "cache/cache_info.h"
#include "cache/cache_registry.h"
#include "cache/frame_names.h"
#include "cache/grid_type.h"
#include "cache/sim_frame.h"
#include "cache/slot_handle.h"
#include "glue/plugin_fixture.h"
#include "support/full_disk.h"
#include "support/support.h"

namespace nbx {
namespace {

namespace fs = std::filesystem;
using test::replaced;

// A ball of smoke above a closed floor, 24 x 40 x 20 voxels.
const char* const kScene = R"({
  "fps": 25, "start": 0, "end": 14,
  "objects": [
    {"type": "volume", "name": "smoke", "position": [0, 20, 0],
     "parameters": {"size": [24, 40, 20], "voxel_size": 1, "closed_y_min": true,
       "simulate_density": true, "cache_velocity": true, "buoyancy_density": 0,
       "buoyancy_temperature": 600, "max_substeps": 2}},
    {"type": "mesh", "name": "ball", "position": [0, 8, 0], "scale": [3, 3, 3],
     "parameters": {"file": "SPHERE"},
     "tags": [{"type": "emitter", "parameters": {"density": 1, "temperature": 1}}]}
  ]})";

class Plugin : public test::PluginFixture {
 protected:
  std::string scene(const std::string& text = kScene) { return PluginFixture::scene(text); }
};

/// Height of the centre of a grid's content in domain cells, and its sum.
std::pair<double, double> height_and_sum(const std::string& path, int type) {
  SimFrame frame;
  EXPECT_TRUE(frame.load(path));
  const FieldHandle grid = frame.grid(type);
  double height = 0, sum = 0;
  for (int z = 0; z < grid->nz(); ++z)
    for (int y = 0; y < grid->ny(); ++y)
      for (int x = 0; x < grid->nx(); ++x) {
        sum += (*grid)(x, y, z);
        height += (frame.grids.at(type).offset[1] + y) * (*grid)(x, y, z);
      }
  return {height / sum, sum};
}

TEST_F(Plugin, SceneBecomesFramesAndAPicture) {
  ASSERT_EQ(run("simulate", simulate_arguments(scene(), -1)), host::kDone);
  EXPECT_TRUE(context_->errors.empty());
  EXPECT_EQ(context_->all<std::int64_t>("frame", "frame").size(), 15u);
  const auto files = frame_files();
  ASSERT_EQ(files.size(), 15u);

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

  host::CommandArguments info;
  info.Add("path", folder_.file("cache"));
  info.AddFlag("values");
  EXPECT_EQ(run("info", info), host::kDone);
  EXPECT_EQ(context_->all<std::int64_t>("cache", "frames"), std::vector<std::int64_t>{15});
  EXPECT_EQ(context_->all<std::string>("grid", "channel").size(), 15u * 5);
  for (std::int64_t nans : context_->all<std::int64_t>("grid", "nans")) EXPECT_EQ(nans, 0);

  host::CommandArguments slice;
  slice.Add("frame", files.back());
  slice.Add("output", folder_.file("smoke.png"));
  slice.Add("scale", "2");
  EXPECT_EQ(run("slice", slice), host::kDone);
  const QImage picture(QString::fromStdString(folder_.file("smoke.png")));
  const Vec3i dims = frame.grids.at(kGridDensity).dims;
  EXPECT_EQ(picture.size(), 2 * QSize(dims[0] - 2, dims[1] - 2));
  EXPECT_GT(picture.height(), 40);
}

// A rate, whatever the substeps: every cell on the surface grows by five times its volume a second.
TEST_F(Plugin, ExpandingSourcesPushTheGas) {
  std::string text = replaced(kScene, R"({"density": 1, "temperature": 1})", R"({"expansion": 5})");
  text = replaced(text, "\"max_substeps\": 2", R"("max_substeps": 2, "source_substeps": 7)");
  ASSERT_EQ(run("simulate", simulate_arguments(scene(text), 2)), host::kDone);
  const double divergence = context_->all<double>("frame", "largest_divergence").back();
  EXPECT_GT(divergence, 4);
  EXPECT_LT(divergence, 5.05);
}

// At twice the pace the gas rises in four frames as far as it does in eight.
TEST_F(Plugin, TimeScaleIsThePaceOfTheGas) {
  const auto rise = [&](const char* scale, int last) {
    const std::string pace = std::string("\"max_substeps\": 8, \"time_scale\": ") + scale;
    const auto path = scene(replaced(kScene, "\"max_substeps\": 2", pace));
    EXPECT_EQ(run("simulate", simulate_arguments(path, last)), host::kDone);
    const auto files = frame_files();
    return height_and_sum(files.at(static_cast<std::size_t>(last)), kGridDensity).first -
           height_and_sum(files.front(), kGridDensity).first;
  };
  const double whole = rise("1", 8), fast = rise("2", 4), half = rise("1", 4);
  EXPECT_GT(whole, 0.5);
  EXPECT_NEAR(fast, whole, 0.1 * whole);
  EXPECT_LT(half, 0.4 * whole);
}

// A burning ball against the open face at the high end of z.
TEST_F(Plugin, FireIsMeasuredAndItsLossesAreTold) {
  std::string text = replaced(kScene, "\"simulate_density\": true",
                              R"("simulate_density": true, "simulate_fuel": true,
       "simulate_burn": true, "fuel_to_expansion": 0.1, "decay_fuel": 0.2)");
  text = replaced(text, "[0, 8, 0]", "[0, 8, 8]");
  text = replaced(text, R"({"density": 1, "temperature": 1})", R"({"fuel": 1})");
  ASSERT_EQ(run("simulate", simulate_arguments(scene(text), 4)), host::kDone);
  const auto& seen = *context_;
  ASSERT_EQ(seen.results.size(), 1u);
  EXPECT_NE(seen.results[0].find("; gas leaves through z+ from frame 0"), std::string::npos)
      << seen.results[0];
  EXPECT_EQ(seen.all<std::vector<std::string>>("frame", "touches").back(),
            std::vector<std::string>{"z+"});
  for (const char* channel : {"mass_fuel", "mass_burn", "mass_temperature", "mass_density"}) {
    const auto mass = seen.all<double>("frame", channel);
    ASSERT_EQ(mass.size(), 5u) << channel;
    EXPECT_GT(mass.back(), 0) << channel;
  }
  // Where a substep's worth of fuel burns, its tenth of volume appears: 0.2 of it in a frame.
  EXPECT_NEAR(seen.all<double>("frame", "largest_divergence").back(), 0.1 * 0.2 * 25, 0.05);

  // The substeps' times add up to their frame's.
  double substeps = 0, frames = 0;
  for (double t : seen.all<double>("substep", "seconds_velocity")) substeps += t;
  for (double t : seen.all<double>("frame", "seconds_velocity")) frames += t;
  EXPECT_GT(frames, 0);
  EXPECT_NEAR(substeps, frames, 1e-9);
}

TEST_F(Plugin, SameBytesForAnyNumberOfThreads) {
  for (const char* threads : {"1", "2", "3"}) {
    auto arguments = simulate_arguments(scene(), 6, threads);
    arguments.Add("threads", threads);
    ASSERT_EQ(run("simulate", arguments), host::kDone);
  }
  const auto one = frame_files("1");
  ASSERT_EQ(one.size(), 7u);
  for (const char* threads : {"2", "3"}) {
    const auto many = frame_files(threads);
    ASSERT_EQ(many.size(), one.size());
    for (std::size_t i = 0; i < one.size(); ++i)
      EXPECT_EQ(test::read_file(one[i]), test::read_file(many[i])) << threads << " " << many[i];
  }
}

TEST_F(Plugin, InterruptsAndShutdownEndTheRunAtTheFrameOrAtOnce) {
  // Large enough that progress is shown within a frame. The interrupt comes in a substep that isn't
  // the frame's last.
  const auto large = scene(replaced(kScene, "\"voxel_size\": 1", "\"voxel_size\": 0.25"));
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
    EXPECT_EQ(run("simulate", simulate_arguments(large, 14, cache)), host::kInterrupted);
    EXPECT_EQ(context_->all<std::string>("end", "outcome"),
              std::vector<std::string>{"interrupted"});
    // The first lets the frame end, the second drops it, and so does the end of the host.
    const auto files = frame_files(cache);
    EXPECT_EQ(files.size(), whole_frames + (interrupts == 1 ? 1 : 0));
    // The state to go on from is that of the last frame, and none is made of half a frame.
    const std::string state = folder_.file(cache + "/LastSimState.bcf");
    ASSERT_EQ(fs::exists(state), interrupts == 1);
    if (interrupts == 1) {
      EXPECT_EQ(height_and_sum(state, kGridDensity), height_and_sum(files.back(), kGridDensity));
    }
    for (const std::string& file : files) EXPECT_TRUE(read_frame_file_info(file, true).good());
  }
}

TEST_F(Plugin, CachesAreCheckedExportedAndImported) {
  const auto with = [&](std::initializer_list<std::pair<const char*, std::string>> values) {
    host::CommandArguments arguments;
    for (const auto& [name, value] : values) arguments.Add(name, value);
    return arguments;
  };
  const std::string cache = folder_.file("cache"), out = folder_.file("out");
  ASSERT_EQ(run("simulate", simulate_arguments(scene(), 4)), host::kDone);
  EXPECT_EQ(run("verify", with({{"path", cache}})), host::kDone);
  EXPECT_EQ(run("export", with({{"path", cache}, {"output", out}, {"format", "raw"}})),
            host::kDone);
  SimFrame frame;
  ASSERT_TRUE(frame.load(frame_files()[4]));
  const FieldHandle density = frame.grid(kGridDensity);
  EXPECT_EQ(test::read_file(out + "/cache.0004.density.raw"),
            std::string(reinterpret_cast<const char*>(density->data()), 4 * density->count()));
  EXPECT_TRUE(fs::exists(out + "/cache.0000.json"));

  if (run("export", with({{"path", cache}, {"output", out}})) == host::kDone) {
    EXPECT_EQ(run("import", with({{"path", out}, {"cache", folder_.file("back")}})), host::kDone);
    const auto back = frame_files("back");
    ASSERT_EQ(back.size(), 5u);
    SimFrame same;
    ASSERT_TRUE(same.load(back[4]));
    EXPECT_EQ(same.frameTime, frame.frameTime);
    EXPECT_EQ(same.box(), frame.box());
    EXPECT_EQ(height_and_sum(back[4], kGridDensity),
              height_and_sum(frame_files()[4], kGridDensity));
  } else {
    EXPECT_NE(context_->errors.at(0).find("no OpenVDB"), std::string::npos);
  }

  // A record damaged, a file cut, one whose writer never came to its end; a gap.
  const auto files = frame_files();
  std::string bytes = test::read_file(files[0]);
  bytes[12 + 4 + 1] = 9;  // the codec of the first record
  std::ofstream(files[0]) << bytes;
  fs::resize_file(files[1], fs::file_size(files[1]) - 1);
  std::fstream(files[2]).seekp(11).put(0);
  fs::remove(files[3]);
  EXPECT_EQ(run("verify", with({{"path", cache}})), host::kFailed);
  const auto damaged = context_->all<std::string>("damaged", "path");
  EXPECT_EQ(std::set<std::string>(damaged.begin(), damaged.end()),
            std::set<std::string>(files.begin(), files.begin() + 3));
  EXPECT_NE(context_->results[0].find("record 1 (density): Unknown codec"), std::string::npos);
  EXPECT_EQ(context_->all<std::int64_t>("verified", "damaged"), std::vector<std::int64_t>{3});
  EXPECT_EQ(run("info", with({{"path", cache}})), host::kFailed);
  EXPECT_EQ(context_->all<std::vector<std::string>>("cache", "missing").at(0),
            std::vector<std::string>{"3"});
  EXPECT_EQ(run("export", with({{"path", cache}, {"output", out}, {"format", "raw"}})),
            host::kFailed);
  // The cut file lacks nothing but its last trailer's end.
  EXPECT_EQ(context_->all<std::int64_t>("exported", "frames"), std::vector<std::int64_t>{2});
  EXPECT_EQ(run("verify", with({{"path", out + "/none"}})), host::kBadInput);
}

TEST_F(Plugin, LostFramesDontEndTheRun) {
  ASSERT_EQ(run("simulate", simulate_arguments(scene(), 6)), host::kDone);
  const auto files = frame_files();
  const std::string first = test::read_file(files[0]);
  // Something that no file can replace stands where frame 3 goes.
  fs::remove(files[3]);
  fs::create_directories(files[3] + "/in/the/way");
  EXPECT_EQ(run("simulate", simulate_arguments(scene(), 6)), host::kFailed);
  ASSERT_EQ(context_->errors.size(), 1u);
  EXPECT_NE(context_->errors[0].find("frame 3 is not stored: "), std::string::npos)
      << context_->errors[0];
  EXPECT_EQ(context_->all<std::int64_t>("lost", "frame"), std::vector<std::int64_t>{3});
  EXPECT_EQ(context_->all<std::int64_t>("end", "stored"), std::vector<std::int64_t>{6});
  EXPECT_EQ(test::read_file(files[0]), first);
  int entries = 0;
  for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder_.file("cache")))
    ++entries;
  EXPECT_EQ(entries, 7 + 3) << "something was left behind";
}

// Frames go out as volumes and come back, with their numbers and their exact times.
TEST_F(Plugin, VolumesKeepTheirFramesAtAnyRate) {
  const auto with = [](std::initializer_list<std::pair<const char*, std::string>> options) {
    host::CommandArguments arguments;
    for (const auto& [name, value] : options) arguments.Add(name, value);
    return arguments;
  };
  const auto times = [&](const std::string& cache) {
    std::map<int, Fraction> all;
    for (const auto& [number, name] : list_frames(folder_.file(cache)))
      all[number] = read_frame_file_info(folder_.file(cache + "/" + name), false).frameTime.time;
    return all;
  };
  const auto fraction = [](double frames, const Fraction& length) {
    return normalize({frames * length.num, length.den});
  };
  for (const Fraction& length : {Fraction{2, 25}, Fraction{1001, 30000}, Fraction{1001, 24000}}) {
    const std::string id = std::to_string(static_cast<int>(length.den)), made = "made" + id;
    fs::create_directory(folder_.file(made));
    std::map<int, Fraction> expected, at_twelve;
    {
      const auto store = getCache(folder_.file(made));
      for (int frame = -5; frame <= 41; ++frame) {
        SlotHandle slot = SlotHandle::forStoring(store, frame, 0);
        const FieldHandle field = acquire_field({3, 3, 3});
        std::fill_n(field->data(), field->count(), 1.0f);
        slot->add(field, kGridDensity, {}, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
        slot->simTime = slot->frameTime = {expected[frame] = fraction(frame, length), length};
        at_twelve[frame] = fraction(frame, {2, 25});
        slot.stored();
      }
    }
    ASSERT_EQ(times(made), expected);
    const std::string volumes = folder_.file("volumes" + id);
    if (run("export", with({{"path", folder_.file(made)}, {"output", volumes}})) != host::kDone)
      GTEST_SKIP() << context_->errors.at(0);  // a build without OpenVDB
    const auto import = [&](const std::string& cache, const char* rate) {
      auto arguments = with({{"path", volumes}, {"cache", folder_.file(cache)}});
      if (rate) arguments.Add("fps", rate);
      EXPECT_EQ(run("import", arguments), host::kDone);
      EXPECT_EQ(context_->all<std::int64_t>("imported", "frames"), std::vector<std::int64_t>{47});
      return times(cache);
    };
    EXPECT_EQ(import("same" + id, nullptr), expected);
    EXPECT_EQ(import("other" + id, "12.5"), at_twelve);
  }
}

// From frame 6 on the folder is gone, or can't be written, or files can't grow as on a full disk:
// the log's neither, so that comes last.
TEST_F(Plugin, RunsSurviveTheDisk) {
  const std::string cache = folder_.file("cache"), moved = folder_.file("moved");
  fs::permissions(folder_.path(), fs::perms::all);
  std::optional<test::FileSizeLimit> limit;
  const uid_t user = geteuid();
  const struct {
    const char* name;
    std::function<void()> fault, mend;
  } cases[] = {
      {"gone", [&] { fs::rename(cache, moved); }, [&] { fs::rename(moved, cache); }},
      {"read-only",
       [&] {
         fs::permissions(cache, fs::perms::owner_read | fs::perms::owner_exec |
                                    fs::perms::others_read | fs::perms::others_exec);
         // Nobody stops root: it becomes somebody else.
         if (user == 0 && seteuid(65534) != 0) ADD_FAILURE();
       },
       [&] {
         if (user == 0 && seteuid(0) != 0) ADD_FAILURE();
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
        while (frame_files().size() < 6) std::this_thread::yield();
        while (read_frame_file_info(frame_files()[5], false).grids.empty())
          std::this_thread::yield();
        c.fault();
      };
    };
    const int code = run("simulate", simulate_arguments(scene(), 14));
    c.mend();
    EXPECT_EQ(code, host::kFailed);
    EXPECT_EQ(context_->all<std::int64_t>("frame", "frame").size(), 15u);
    auto lost = context_->all<std::int64_t>("lost", "frame");
    std::sort(lost.begin(), lost.end());  // a frame is given up when its slot is wanted
    EXPECT_EQ(lost, (std::vector<std::int64_t>{6, 7, 8, 9, 10, 11, 12, 13, 14}));
    EXPECT_EQ(context_->errors.size(), 9u);
    const auto files = frame_files();
    EXPECT_EQ(files.size(), 6u);
    for (const std::string& file : files) EXPECT_TRUE(read_frame_file_info(file, true).good());
  }
  EXPECT_TRUE(log_.contains("IOW: Failed to write file "));
  EXPECT_TRUE(log_.contains("IOW: NOT writing frame 14"));
}

TEST_F(Plugin, BadInputIsRefusedWithOneLineAndNothingWritten) {
  const struct {
    const char *from, *to, *message;
  } cases[] = {
      {"\"voxel_size\": 1", "\"voxel_size\": 0", "voxel_size must be above 0"},
      {"\"voxel_size\": 1", "\"voxel_size\": -1", "voxel_size"},
      {"\"voxel_size\": 1", "\"voxel_size\": 1e-12", "voxels along x"},
      {"\"voxel_size\": 1", "\"voxel_size\": 1e-300", "voxels along x"},
      {"\"voxel_size\": 1", "\"voxl_size\": 1", "voxel_size"},
      {"\"simulate_density\": true", "\"simulate_density\": \"yes\"", "simulate_density"},
      {"\"end\": 14", "\"end\": 14, \"preview_start\": 9, \"preview_end\": 3", "preview"},
      {"sphere.obj", "nothing.obj", "nothing.obj"},
  };
  for (const auto& c : cases) {
    const std::string path = scene();
    const std::string text = test::read_file(path);
    std::ofstream(path) << replaced(text, c.from, c.to);
    EXPECT_EQ(run("simulate", simulate_arguments(path, -1)), host::kBadInput) << c.to;
    ASSERT_EQ(context_->errors.size(), 1u) << c.to;
    EXPECT_NE(context_->errors[0].find(c.message), std::string::npos) << context_->errors[0];
    EXPECT_EQ(context_->errors[0].find('\n'), std::string::npos);
    EXPECT_FALSE(fs::exists(folder_.file("cache"))) << c.to;
  }

  auto strided = simulate_arguments(scene(), -1);
  strided.AddFrames("frames", {0, 2, 4});
  EXPECT_EQ(run("simulate", strided), host::kBadInput);
  auto device = simulate_arguments(scene(), -1);
  device.Add("device", "7");
  EXPECT_EQ(run("simulate", device), host::kBadInput);
  std::ofstream(folder_.file("cache")) << "a file";
  EXPECT_EQ(run("simulate", simulate_arguments(scene(), -1)), host::kBadInput);
  EXPECT_EQ(test::read_file(folder_.file("cache")), "a file");

  host::CommandArguments info;
  info.Add("path", folder_.file("cache"));
  EXPECT_EQ(run("info", info), host::kBadInput);
  host::CommandArguments slice;
  slice.Add("frame", folder_.file("cache"));
  slice.Add("output", folder_.file("smoke.png"));
  slice.Add("scale", "2");
  EXPECT_EQ(run("slice", slice), host::kBadInput);
  EXPECT_FALSE(fs::exists(folder_.file("smoke.png")));
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
