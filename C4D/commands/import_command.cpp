#include "C4D/commands/import_command.h"

#include <QFileInfo>

#include "C4D/commands/import_vdb.h"

namespace nbx {

namespace {

constexpr std::int32_t kImportCommand = 1023999;

/// What is imported depends on the path: volumes become a cache, models a scene.
class ImportCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    std::vector<host::OptionInfo> options{
        {.name = "path",
         .value_name = "PATH",
         .help = "A VDB file or a folder with a sequence of them, which become a cache; or a "
                 "glTF, OBJ, PLY or FBX file, which becomes a scene",
         .positional = true,
         .required = true},
        {.name = "output",
         .value_name = "SCENE",
         .help = "the scene of a model file, default: its name with .json, in this folder"}};
    options.push_back({.name = "force",
                       .type = host::OptionType::Flag,
                       .help = "Reads a model however much work its polygons and keys ask for"});
    for (const host::OptionInfo& option : import_vdb_options()) options.push_back(option);
    return {.verb = "import",
            .help = "Takes in files of other programs: volumes become a cache, models a scene",
            .options = options,
            .common = {host::CommonOption::Cache, host::CommonOption::Set}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const std::string path = arguments.GetString("path");
    if (!QFileInfo::exists(QString::fromStdString(path))) {
      context.Error(path + " doesn't exist");
      return host::kBadInput;
    }
    if (is_vdb_path(path)) return import_vdb(path, arguments, context);
    if (context.IsModel({path})) return import_scene(path, arguments, context);
    context.Error(path + " is neither a .vdb file, nor a folder with such files, nor a model");
    return host::kBadInput;
  }

 private:
  static int import_scene(const std::string& path, const host::CommandArguments& arguments,
                          host::CommandContext& context) {
    const auto document = context.LoadDocument({path});
    if (!document) return host::kBadInput;
    const QString name = QFileInfo(QString::fromStdString(path)).completeBaseName() + ".json";
    const std::string scene = arguments.GetString("output", name.toStdString());
    if (!context.SaveDocument(*document, {scene})) return host::kBadInput;
    context.Result("scene: " + scene);
    context.Event("import", {{"file", path}, {"scene", scene}});
    return host::kDone;
  }
};

}  // namespace

bool register_import_command(host::HostServices& services, const std::string& name) {
  return services.RegisterCommandPlugin(
      kImportCommand, name,
      []() -> std::unique_ptr<host::CommandData> { return std::make_unique<ImportCommand>(); });
}

}  // namespace nbx
