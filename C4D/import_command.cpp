#include "C4D/import_command.h"

#include <QFileInfo>

#include "C4D/import_vdb.h"

namespace nbx {

namespace {

constexpr std::int32_t kImportCommand = 1023999;

/// What is imported depends on the path: volumes become a cache.
class ImportCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    std::vector<host::OptionInfo> options{
        {.name = "path",
         .value_name = "PATH",
         .help = "A VDB file, or a folder with a sequence of them: becomes a cache",
         .positional = true,
         .required = true}};
    for (const host::OptionInfo& option : import_vdb_options()) options.push_back(option);
    return {.verb = "import",
            .help = "Takes in volumes of other programs: VDB files become a cache",
            .options = options,
            .common = {host::CommonOption::Cache}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const std::string path = arguments.GetString("path");
    if (!QFileInfo::exists(QString::fromStdString(path))) {
      context.Error(path + " doesn't exist");
      return host::kBadInput;
    }
    if (is_vdb_path(path)) return import_vdb(path, arguments, context);
    context.Error(path + " is neither a .vdb file nor a folder with such files");
    return host::kBadInput;
  }
};

}  // namespace

bool register_import_command(host::HostServices& services) {
  return services.RegisterCommandPlugin(
      kImportCommand, "Import",
      []() -> std::unique_ptr<host::CommandData> { return std::make_unique<ImportCommand>(); });
}

}  // namespace nbx
