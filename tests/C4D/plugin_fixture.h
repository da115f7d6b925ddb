// A plug-in in the small host, with commands to run and a folder that vanishes.
#pragma once

#include <QImage>
#include <functional>

#include "C4D/recording_context.h"
#include "cache/frame_names.h"
#include "cache/grid_type.h"
#include "cache/sim_frame.h"
#include "host/plugin_module.h"
#include "support/support.h"

namespace nbx::test {

namespace fs = std::filesystem;

inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

class PluginFixture : public ::testing::Test {
 protected:
  PluginFixture() : module_(NBX_PLUGIN, host_) {}

  std::string scene(const std::string& text) {
    const std::string path = folder_.file("scene.json");
    std::string whole = text;
    while (whole.find("SPHERE") != std::string::npos)
      whole = replaced(whole, "SPHERE", NBX_SCENES "/meshes/sphere.obj");
    std::ofstream(path) << whole;
    return path;
  }

  int run(host::CommandData& command, const host::CommandArguments& arguments) {
    context_ = std::make_unique<RecordingContext>(host_);
    if (prepare_context) prepare_context(*context_);
    return command.Execute(arguments, *context_);
  }
  int run(const std::string& verb, const host::CommandArguments& arguments) {
    for (const auto& command : host_.Commands())
      if (command.info.verb == verb) return run(*command.data, arguments);
    ADD_FAILURE() << "no command " << verb;
    return -1;
  }

  /// Options and their values; one without a value is a flag.
  static host::CommandArguments with(
      const std::vector<std::pair<std::string, std::string>>& options) {
    host::CommandArguments arguments;
    for (const auto& [name, value] : options)
      value.empty() ? arguments.AddFlag(name) : arguments.Add(name, value);
    return arguments;
  }

  /// The frames from `first` to `last`, unless that is negative.
  host::CommandArguments simulate_arguments(const std::string& scene_path, int last,
                                            const std::string& cache = "cache", int first = 0,
                                            bool overwrite = true) {
    host::CommandArguments arguments = with({{"scene", scene_path}});
    if (overwrite) arguments.AddFlag("overwrite");
    std::vector<std::int32_t> frames;
    for (int f = first; f <= last; ++f) frames.push_back(f);
    if (last >= 0) arguments.AddFrames("frames", frames);
    if (!cache.empty()) arguments.Add("cache", folder_.file(cache));
    return arguments;
  }

  std::vector<std::string> frame_files(const std::string& cache = "cache") {
    std::vector<std::string> paths;
    for (const auto& [frame, name] : list_frames(folder_.file(cache)))
      paths.push_back(folder_.file(cache + "/" + name));
    return paths;
  }

  LogCapture log_;
  TemporaryFolder folder_;
  host::SmallHost host_;
  host::PluginModule module_;
  std::unique_ptr<RecordingContext> context_;
  std::function<void(RecordingContext&)> prepare_context;
};

}  // namespace nbx::test
