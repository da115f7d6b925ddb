// The built-in command `describe`: lists the types that scenes can contain, and their parameters.
#pragma once

#include "host/interface/command_data.h"
#include "host/scene/element_class.h"

namespace host {

/// Prints all classes. `kind` is their kind in one word, such as "object".
void DescribeAll(const ElementClasses& classes, const char* kind, CommandContext& context);

/// Prints the parameters of that name, each with its type. False if there is none.
bool DescribeParameter(const SceneClasses& classes, const std::string& name,
                       CommandContext& context);
/// The names of all types, in the order in which they are described.
std::vector<std::string> TypeNames(const SceneClasses& classes);

class DescribeCommand final : public CommandData {
 public:
  /// The classes are read when the command runs.
  explicit DescribeCommand(const SceneClasses& classes) : classes_(classes) {}
  CommandInfo GetInfo() const override;
  int Execute(const CommandArguments& arguments, CommandContext& context) override;

 private:
  const SceneClasses& classes_;
};

}  // namespace host
