#include "host/program/help_command.h"

#include "host/base/nearest_name.h"
#include "host/program/describe_command.h"

namespace host {

CommandInfo HelpCommand::GetInfo() const {
  return {
      .verb = "help",
      .help = "Lists parameters: help parameters volume|emitter|render|preferences",
      .options = {{.name = "TOPIC",
                   .type = OptionType::Choice,
                   .value_name = "TOPIC",
                   .help = "parameters: names, types, defaults, ranges and units",
                   .positional = true,
                   .required = true,
                   .choices = {"parameters"}},
                  {.name = "OF",
                   .value_name = "OF",
                   .help = "Type to list; default: all. render: render settings and post effects",
                   .positional = true}}};
}

int HelpCommand::Execute(const CommandArguments& arguments, CommandContext& context) {
  const std::string of = arguments.GetString("OF");
  if (of == "render") {
    DescribeAll(classes_.render, "render", context);
    DescribeAll(classes_.post_effects, "post effect", context);
    return kDone;
  }
  CommandArguments one;
  if (!of.empty()) one.Add("TYPE", of);
  return DescribeCommand(classes_).Execute(one, context);
}

}  // namespace host
