#include "host/import_command.h"

#include <filesystem>

#include "host/model_file.h"
#include "host/nearest_name.h"

namespace host {

CommandInfo ImportCommand::GetInfo() const {
  return {.verb = "import",
          .help = "Makes a scene document from a glTF, OBJ, PLY or FBX file",
          .options = {{.name = "file",
                       .value_name = "FILE",
                       .help = "The file; its meshes and pictures stay in it",
                       .positional = true,
                       .required = true},
                      {.name = "output",
                       .value_name = "SCENE",
                       .help = "the document, default: the file's name with .json, here"}},
          .common = {CommonOption::Fps, CommonOption::Set}};
}

int ImportCommand::Execute(const CommandArguments& arguments, CommandContext& context) {
  const std::string file = arguments.GetString("file");
  if (!IsModelName(file)) {
    context.Error(Quoted(file) + " has no name of a model; give a glTF, OBJ, PLY or FBX file");
    return kBadInput;
  }
  const auto document = context.LoadDocument({file});
  if (!document) return kBadInput;
  const std::string scene =
      arguments.GetString("output", std::filesystem::path(file).stem().string() + ".json");
  if (!context.SaveDocument(*document, {scene})) return kBadInput;
  context.Result("scene: " + scene);
  context.Event("import", {{"file", file}, {"scene", scene}});
  return kDone;
}

}  // namespace host
