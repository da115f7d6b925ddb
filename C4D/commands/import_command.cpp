#include <QFileInfo>

#include "C4D/commands/commands.h"
#include "C4D/commands/import_vdb.h"
#include "C4D/commands/register_command.h"

namespace nbx {

namespace {

constexpr std::int32_t kImportCommand = 1023999;

class ImportCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    std::vector<host::OptionInfo> options{
        {.name = "path",
         .value_name = "PATH",
         .help = "A VDB file or a folder with a sequence of VDB files, imported as a cache; or a "
                 "glTF, OBJ, PLY or FBX file, imported as a scene",
         .positional = true,
         .required = true},
        {.name = "output",
         .value_name = "SCENE",
         .help = "Scene to write for a model file; default: the file's name with .json, in this "
                 "folder"}};
    options.push_back({.name = "force",
                       .type = host::OptionType::Flag,
                       .help = "Import a model however large it is"});
    for (const host::OptionInfo& option : import_vdb_options()) options.push_back(option);
    return {.verb = "import",
            .help = "Imports files of other programs: volumes as a cache, models as a scene",
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
  return register_command<ImportCommand>(services, kImportCommand, name);
}

}  // namespace nbx
