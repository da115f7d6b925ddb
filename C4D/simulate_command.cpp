#include "C4D/simulate_command.h"

#include <QDir>
#include <QFileInfo>

#include "C4D/command_options.h"
#include "C4D/simulation_driver.h"
#include "C4D/volume_parameters.h"

namespace nbx {

namespace {

constexpr std::int32_t kStartSimulation = 1023994;

/// Frames without a --cache of their own go beside the scene: "first_smoke.json" with the volume
/// "smoke" into "first_smoke.smoke.cache".
std::string default_cache(const host::BaseObject& volume) {
  const host::BaseDocument& document = volume.GetDocument();
  const QFileInfo file(QString::fromStdString(document.GetDocumentName()));
  QString object = QString::fromStdString(volume.GetName());
  object.replace('/', '_');
  const QDir folder(QString::fromStdString(document.GetDocumentPath().path));
  return folder.filePath(file.completeBaseName() + "." + object + ".cache").toStdString();
}

class SimulateCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    using host::CommonOption;
    return {.verb = "simulate",
            .help =
                "Runs the simulation of the scene's volume object; without --cache, the frames go "
                "into the folder SCENE.OBJECT.cache beside the scene",
            .options = {{.name = "scene",
                         .value_name = "SCENE",
                         .help = "The scene document",
                         .positional = true,
                         .required = true}},
            .common = {CommonOption::Frames, CommonOption::Object, CommonOption::Cache,
                       CommonOption::Threads, CommonOption::Device, CommonOption::Set,
                       CommonOption::Fps}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    if (!apply_machine_options(arguments, context)) return host::kBadInput;
    const auto document = context.LoadDocument({arguments.GetString("scene")});
    if (!document) return host::kBadInput;
    host::BaseObject* volume = context.FindObject(*document, kVolumeObject);
    if (!volume) return host::kBadInput;

    RunRange range = run_range(*volume);
    if (const auto& frames = arguments.GetFrames("frames"); !frames.empty()) {
      range = {frames.front(), frames.back()};
      if (static_cast<std::size_t>(range.last - range.first) + 1 != frames.size()) {
        context.Error("--frames: a simulation runs through every frame: give FIRST-LAST");
        return host::kBadInput;
      }
    }
    const std::string cache = arguments.Has("cache")
                                  ? QFileInfo(QString::fromStdString(arguments.GetString("cache")))
                                        .absoluteFilePath()
                                        .toStdString()
                                  : default_cache(*volume);
    return SimulationDriver(*volume, range, cache, context).run();
  }
};

}  // namespace

bool register_simulate_command(host::HostServices& services) {
  return services.RegisterCommandPlugin(
      kStartSimulation, "Start simulation",
      []() -> std::unique_ptr<host::CommandData> { return std::make_unique<SimulateCommand>(); });
}

}  // namespace nbx
