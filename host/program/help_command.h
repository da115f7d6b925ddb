// The built-in command `help`: lists parameters by class.
#pragma once

#include "host/interface/command_data.h"
#include "host/scene/element_class.h"

namespace host {

class HelpCommand final : public CommandData {
 public:
  /// The classes are read when the command runs.
  explicit HelpCommand(const SceneClasses& classes) : classes_(classes) {}
  CommandInfo GetInfo() const override;
  int Execute(const CommandArguments& arguments, CommandContext& context) override;

 private:
  const SceneClasses& classes_;
};

}  // namespace host
