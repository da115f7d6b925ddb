#include "C4D/save_assets.h"

#include <QDir>
#include <QFileInfo>

#include "C4D/load_string.h"
#include "C4D/volume_cache.h"
#include "C4D/volume_parameters.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr std::int32_t kCollectCommand = 1024000;

/// Hands the message to an object and all that lies under and behind it.
void tell(host::BaseObject* object, host::SaveAssets& assets) {
  for (; object; object = object->GetNext()) {
    object->Message(host::kMessageSaveAssets, &assets);
    tell(object->GetDown(), assets);
  }
}

class CollectCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    return {.verb = "collect",
            .help = "Saves a scene, with copies of its caches, into a folder",
            .options = {{.name = "scene",
                         .value_name = "SCENE",
                         .help = "The scene document",
                         .positional = true,
                         .required = true},
                        {.name = "output",
                         .value_name = "DIR",
                         .help = "The folder, made if missing",
                         .required = true}},
            .common = {host::CommonOption::Set, host::CommonOption::Force}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const auto document = context.LoadDocument({arguments.GetString("scene")});
    if (!document) return host::kBadInput;
    const QDir folder(QString::fromStdString(arguments.GetString("output")));
    if (!folder.mkpath(".")) {
      context.Error("--output: the folder " + folder.path().toStdString() + " can't be made");
      return host::kBadInput;
    }
    host::SaveAssets assets{
        .folder = {folder.absolutePath().toStdString()}, .progress = [&](int done, int total) {
          context.Progress(std::to_string(done) + " of " + std::to_string(total) + " files", false);
        }};
    tell(document->GetFirstObject(), assets);
    for (const std::string& failure : assets.failures) context.Error(failure);
    const QFileInfo scene(QString::fromStdString(arguments.GetString("scene")));
    const std::string path =
        folder.absoluteFilePath(scene.completeBaseName() + ".json").toStdString();
    if (!context.SaveDocument(*document, {path})) return host::kBadInput;
    context.Result("scene: " + path);
    context.Event("collected", {{"scene", path}, {"failures", assets.failures}});
    return assets.failures.empty() ? host::kDone : host::kFailed;
  }
};

}  // namespace

void save_cache(host::BaseObject& volume, host::SaveAssets& assets) {
  const auto store = volume_cache(volume, false);
  if (!store) return;
  const std::string source = store->directory(), name = volume.GetName();
  const QDir project(QString::fromStdString(assets.folder.path));
  const CacheDirData copy{project.absoluteFilePath("nbx4d_caches").toStdString(),
                          QDir(QString::fromStdString(source)).dirName().toStdString()};
  if (source == copy.base + "/" + copy.name) return;
  if (!project.mkpath("nbx4d_caches")) {
    LogMessage() << "Failed to create cache directory in " << assets.folder.path;
    assets.failures.push_back("volume \"" + name + "\": " + load_string(10009) + ": " +
                              load_string(10012) + " (" + copy.base + ")");
  } else if (!store->copyDir(copy.base, assets.progress)) {
    assets.failures.push_back("volume \"" + name + "\": the cache " + source +
                              " can't be copied to " + copy.base);
  } else {
    set_cache_dir_data(volume, copy);
  }
}

bool register_collect_command(host::HostServices& services, const std::string& name) {
  return services.RegisterCommandPlugin(
      kCollectCommand, name,
      []() -> std::unique_ptr<host::CommandData> { return std::make_unique<CollectCommand>(); });
}

}  // namespace nbx
