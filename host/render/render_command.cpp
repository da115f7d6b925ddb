#include "host/render/render_command.h"

#include <filesystem>
#include <stdexcept>

#include "host/render/job/render_run.h"

namespace host {
namespace {

/// Sets the cache of the only object in the scene that has one. Throws std::runtime_error if there
/// isn't exactly one.
void ChooseCache(const Document& document, const std::string& directory) {
  SceneObject* chosen = nullptr;
  const ParameterInfo* parameter = nullptr;
  for (SceneObject* object : document.AllObjects()) {
    const ParameterInfo* found = object->State().type->description.Find("cache_name");
    if (!found) continue;
    if (chosen)
      throw std::runtime_error("--cache: \"" + chosen->GetName() + "\" and \"" + object->GetName() +
                               "\" have caches; set each of them with --set NAME.cache_name=DIR");
    chosen = object;
    parameter = found;
  }
  if (!chosen) throw std::runtime_error("--cache: no object of the scene has a cache");
  chosen->GetDataInstance().SetFilename(parameter->id,
                                        {std::filesystem::absolute(directory).string()});
}

/// Lets all objects that have frames of an up-resolution run show those. Throws std::runtime_error
/// if there is none.
void ChooseUpres(const Document& document) {
  bool any = false;
  for (SceneObject* object : document.AllObjects())
    if (const auto* found = object->State().type->description.Find("show_upres")) {
      object->GetDataInstance().SetBool(found->id, true);
      any = true;
    }
  if (!any) throw std::runtime_error("--upres: no object of the scene has a cache");
}

}  // namespace

CommandInfo RenderCommand::GetInfo() const {
  return {.verb = "render",
          .help = "Renders frames of a scene to EXR or PNG pictures",
          .options = RenderOptions(),
          .common = {CommonOption::Frames, CommonOption::Cache, CommonOption::Threads,
                     CommonOption::Set, CommonOption::Fps, CommonOption::Force}};
}

int RenderCommand::Execute(const CommandArguments& arguments, CommandContext& context) {
  const auto document = context.LoadDocument({arguments.GetString("scene")});
  if (!document) return kBadInput;
  RenderJob job;
  try {
    if (arguments.Has("cache"))
      ChooseCache(static_cast<Document&>(*document), arguments.GetString("cache"));
    if (arguments.Has("upres")) ChooseUpres(static_cast<Document&>(*document));
    job = ReadJob(arguments, *document);
    if (!arguments.Has("force")) CheckWork(job);
    for (const std::int32_t frame : {job.frames.front(), job.frames.back()})
      CheckWritable(job.PathOf(frame));
  } catch (const std::exception& error) {
    context.Error(error.what());
    return kBadInput;
  }
  return RenderRun(static_cast<Document&>(*document), job, software_, context).Run();
}

}  // namespace host
