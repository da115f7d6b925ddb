// The host's own command `describe`: the types that scenes can hold, and their parameters.
#pragma once

#include "host/interface/command_data.h"
#include "host/scene/element_class.h"

namespace host {

/// Tells of all classes of a row; `kind` is what they are, in a word.
void DescribeAll(const ElementClasses& classes, const char* kind, CommandContext& context);

class DescribeCommand final : public CommandData {
 public:
  /// The classes are looked up when the command runs.
  explicit DescribeCommand(const SceneClasses& classes) : classes_(classes) {}
  CommandInfo GetInfo() const override;
  int Execute(const CommandArguments& arguments, CommandContext& context) override;

 private:
  const SceneClasses& classes_;
};

}  // namespace host
