#include "host/render/render_command.h"

#include <stdexcept>

#include "host/render/render_run.h"

namespace host {

CommandInfo RenderCommand::GetInfo() const {
  return {.verb = "render",
          .help = "Renders frames of a scene to EXR or PNG pictures",
          .options = RenderOptions(),
          .common = {CommonOption::Frames, CommonOption::Threads, CommonOption::Set}};
}

int RenderCommand::Execute(const CommandArguments& arguments, CommandContext& context) {
  const auto document = context.LoadDocument({arguments.GetString("scene")});
  if (!document) return kBadInput;
  RenderJob job;
  try {
    job = ReadJob(arguments, *document);
    for (const std::int32_t frame : {job.frames.front(), job.frames.back()})
      CheckWritable(job.PathOf(frame));
  } catch (const std::exception& error) {
    context.Error(error.what());
    return kBadInput;
  }
  return RenderRun(static_cast<Document&>(*document), job, software_, context).Run();
}

}  // namespace host
