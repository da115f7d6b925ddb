// The built-in command `new`: writes a scene to start from.
#pragma once

#include "host/interface/command_data.h"
#include "host/scene/element_class.h"

namespace host {

class NewCommand final : public CommandData {
 public:
  /// The classes are read when the command runs.
  explicit NewCommand(const SceneClasses& classes) : classes_(classes) {}
  CommandInfo GetInfo() const override;
  int Execute(const CommandArguments& arguments, CommandContext& context) override;

 private:
  const SceneClasses& classes_;
};

}  // namespace host
