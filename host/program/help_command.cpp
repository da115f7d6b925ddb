#include "host/program/help_command.h"

#include <algorithm>

#include "host/base/nearest_name.h"
#include "host/format/scene_hints.h"
#include "host/program/describe_command.h"

namespace host {

CommandInfo HelpCommand::GetInfo() const {
  return {.verb = "help",
          .help =
              "Explains a command, a type or a parameter: help simulate, help volume, help "
              "voxel_size",
          .options = {{.name = "TOPIC",
                       .value_name = "TOPIC",
                       .help = "A command, a type of the scene or the name of a parameter; or "
                               "\"parameters\", for those of all types or of one",
                       .positional = true,
                       .required = true},
                      {.name = "OF",
                       .value_name = "OF",
                       .help = "Type whose parameters to list. render: render settings and post "
                               "effects",
                       .positional = true}}};
}

int HelpCommand::Execute(const CommandArguments& arguments, CommandContext& context) {
  const std::string topic = arguments.GetString("TOPIC");
  std::string of = arguments.GetString("OF");
  if (topic != "parameters") {
    if (!of.empty()) {
      context.Error("help takes one word, or \"parameters\" and the name of a type");
      return kBadInput;
    }
    of = topic;
  }
  if (of == "render") {
    DescribeAll(classes_.render, "render", context);
    DescribeAll(classes_.post_effects, "post effect", context);
    return kDone;
  }
  std::vector<std::string> known = TypeNames(classes_);
  if (of.empty() || std::ranges::find(known, of) != known.end()) {
    CommandArguments one;
    if (!of.empty()) one.Add("TYPE", of);
    return DescribeCommand(classes_).Execute(one, context);
  }
  if (DescribeParameter(classes_, of, context)) return kDone;
  if (topic != "parameters") {
    const std::vector<std::string> verbs = verbs_();
    known.insert(known.end(), verbs.begin(), verbs.end());
  }
  known.push_back("parameters");
  const std::string hint = TypeHint(of, "object", classes_);
  context.Error("there is no help on " + Quoted(of) +
                (hint.empty() ? DidYouMean(of, known) : hint));
  return kBadInput;
}

}  // namespace host
