#include "host/program/new_command.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "host/base/document_error.h"
#include "host/base/nearest_name.h"
#include "host/base/whole_file.h"
#include "host/format/document_reader.h"
#include "host/format/document_writer.h"
#include "host/import/model_stage.h"
#include "host/program/starting_scenes.h"

namespace host {
namespace {

namespace fs = std::filesystem;

/// What to write, from the words of the user.
struct Order {
  const StartingScene* start = nullptr;
  std::string model;  ///< empty: the starting scene as it is
  std::string path;
};

Order ReadOrder(const CommandArguments& arguments) {
  Order order;
  order.model = arguments.GetString("from");
  std::string kind = arguments.GetString("KIND");
  order.path = arguments.GetString("FILE");
  // The kind may be omitted if there is a model.
  if (!order.model.empty() && order.path.empty() && fs::path(kind).extension() == ".json")
    order.path.swap(kind);
  if (kind.empty()) kind = StartingScenes().front().kind;
  order.start = FindStartingScene(kind);
  if (!order.start) {
    std::vector<std::string> kinds;
    for (const StartingScene& scene : StartingScenes()) kinds.push_back(scene.kind);
    const std::string near = DidYouMean(kind, kinds);
    throw DocumentError("unknown kind of scene " + Quoted(kind) +
                        (near.empty() ? "; choose one of " + KindsOfScenes() : near));
  }
  if (order.path.empty())
    order.path = (order.model.empty() ? kind : fs::path(order.model).stem().string()) + ".json";
  return order;
}

/// Throws DocumentError if the order can't be carried out.
void Check(const Order& order, const CommandArguments& arguments, const CommandContext& context) {
  if (order.model.empty() && arguments.Has("fps"))
    throw DocumentError("--fps is for models; name one with --from");
  if (!order.model.empty() && !context.IsModel({order.model}))
    throw DocumentError(order.model, "isn't a model; --from takes glTF, OBJ, PLY, FBX ...");
  if (fs::exists(order.path) && !arguments.Has("overwrite"))
    throw DocumentError(order.path,
                        "the file exists; name another one, or replace it with --overwrite");
}

/// The path as a word of a shell's command line.
std::string ShellWord(const std::string& path) {
  const auto plain = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; };
  const bool safe = std::all_of(path.begin(), path.end(), [&](char c) {
    return plain(c) || c == '.' || c == '/' || c == '_' || c == '-' || c == '#';
  });
  if (safe) return path;
  std::string word = "'";
  for (const char c : path) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

void ListKinds(CommandContext& context) {
  std::size_t width = 0;
  for (const StartingScene& scene : StartingScenes()) width = std::max(width, scene.kind.size());
  for (const StartingScene& scene : StartingScenes()) {
    context.Result("  " + scene.kind + std::string(width - scene.kind.size() + 2, ' ') +
                   scene.Summary());
    context.Event("kind", {{"kind", scene.kind}, {"help", scene.Summary()}});
  }
  context.Result("Write one with: nimbrix new KIND [FILE]");
}

/// The files of the document become relative to its new folder.
void MoveTo(Document& document, const fs::path& folder) {
  const auto move = [&](ElementState& state) {
    for (const ParameterInfo& info : state.type->description.parameters) {
      if (info.type != ParameterType::Filename) continue;
      const fs::path file = document.Resolve(state.data.GetFilename(info.id)).path;
      if (!file.empty())
        state.data.SetFilename(info.id, {file.lexically_relative(folder).string()});
    }
  };
  for (SceneObject* object : document.AllObjects()) move(object->State());
  for (const auto& shader : document.Shaders()) move(shader->State());
  document.folder = folder.string();
}

/// The scene around a model, with a first line that says where it comes from.
std::string TextOf(Document& document, const Order& order) {
  const fs::path folder = fs::absolute(order.path).lexically_normal().parent_path();
  MoveTo(document, folder);
  return "// The gas of \"nimbrix new " + order.start->kind + "\" from the meshes of " +
         fs::path(order.model).filename().string() + "\n" +
         WriteDocument(document, folder.string());
}

/// Names the file and the next three commands. The picture shows that frame.
void Report(const Order& order, std::int32_t frame, CommandContext& context) {
  const std::string scene = ShellWord(order.path);
  const std::string pictures =
      ShellWord(fs::path(order.path).replace_extension().string() + "-####.png");
  const std::vector<std::string> next{
      "nimbrix check " + scene, "nimbrix simulate " + scene,
      "nimbrix render " + scene + " --frames " + std::to_string(frame) + " --output " + pictures};
  context.Result("scene: " + order.path);
  context.Result("Next:");
  for (const std::string& line : next) context.Result("  " + line);
  context.Event("new", {{"kind", order.start->kind}, {"scene", order.path}, {"next", next}});
}

}  // namespace

CommandInfo NewCommand::GetInfo() const {
  return {.verb = "new",
          .help = "Writes a scene to start from, or puts a domain around a model",
          .options = {{.name = "KIND",
                       .value_name = "KIND",
                       .help = KindsOfScenes() + "; without a kind they are listed",
                       .positional = true},
                      {.name = "FILE",
                       .value_name = "FILE",
                       .help = "Scene to write; default: KIND.json, or the name of the model, in "
                               "this folder",
                       .positional = true},
                      {.name = "from",
                       .value_name = "MODEL",
                       .help = "glTF, OBJ, PLY or FBX file whose meshes emit the gas; KIND is then "
                               "smoke by default"},
                      {.name = "overwrite",
                       .type = OptionType::Flag,
                       .help = "Replaces FILE if it exists"}},
          .common = {CommonOption::Fps, CommonOption::Force}};
}

int NewCommand::Execute(const CommandArguments& arguments, CommandContext& context) {
  if (!arguments.Has("KIND") && !arguments.Has("from")) {
    ListKinds(context);
    return kDone;
  }
  try {
    const Order order = ReadOrder(arguments);
    Check(order, arguments, context);
    const auto start = ReadDocument(order.start->text, {}, classes_);
    std::string text = order.start->text;
    std::int32_t first = start->start, last = start->end;
    if (!order.model.empty()) {
      const auto loaded = context.LoadDocument({order.model});
      if (!loaded) return kBadInput;
      auto& document = static_cast<Document&>(*loaded);
      SetStage(document, *start, classes_);
      text = TextOf(document, order);
      first = document.start;
      last = document.end;
    }
    const WholeFile file(order.path);
    file.MakeFolder();
    file.Write(text);
    file.Commit();
    Report(order, first + (last - first) / 2, context);
    return kDone;
  } catch (const DocumentError& error) {
    context.Error(error.what());
  } catch (const fs::filesystem_error& error) {
    context.Error("the scene can't be written: " + std::string(error.what()));
  }
  return kBadInput;
}

}  // namespace host
