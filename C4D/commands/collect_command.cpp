#include <QDir>
#include <QFileInfo>

#include "C4D/commands/commands.h"
#include "C4D/commands/register_command.h"

namespace nbx {

namespace {

constexpr std::int32_t kCollectCommand = 1024000;

/// Sends the message to an object, the objects below it, and those that follow.
void send(host::BaseObject* object, host::SaveAssets& assets) {
  for (; object; object = object->GetNext()) {
    object->Message(host::kMessageSaveAssets, &assets);
    send(object->GetDown(), assets);
  }
}

class CollectCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    return {.verb = "collect",
            .help =
                "Saves a scene into a folder, with copies of its caches, meshes, pictures and "
                "other files",
            .options = {{.name = "scene",
                         .value_name = "SCENE",
                         .help = "The scene document",
                         .positional = true,
                         .required = true},
                        {.name = "output",
                         .value_name = "DIR",
                         .help = "Folder for the scene; created if it is missing",
                         .required = true}},
            .common = {host::CommonOption::Set, host::CommonOption::Force}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const auto document = context.LoadDocument({arguments.GetString("scene")});
    if (!document) return host::kBadInput;
    const QDir folder(QString::fromStdString(arguments.GetString("output")));
    if (!folder.mkpath(".")) {
      context.Error("--output: the folder " + folder.path().toStdString() + " can't be created");
      return host::kBadInput;
    }
    host::SaveAssets assets{
        .folder = {folder.absolutePath().toStdString()}, .progress = [&](int done, int total) {
          context.Progress(std::to_string(done) + " of " + std::to_string(total) + " files", false);
        }};
    send(document->GetFirstObject(), assets);
    for (const std::string& failure : context.CollectFiles(*document, assets.folder))
      assets.failures.push_back(failure);
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

bool register_collect_command(host::HostServices& services, const std::string& name) {
  return register_command<CollectCommand>(services, kCollectCommand, name);
}

}  // namespace nbx
