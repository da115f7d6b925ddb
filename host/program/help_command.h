// The built-in command `help`: lists the parameters of a type, or explains one parameter.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "host/interface/command_data.h"
#include "host/scene/element_class.h"

namespace host {

class HelpCommand final : public CommandData {
 public:
  /// The classes and the verbs of the program are read when the command runs.
  HelpCommand(const SceneClasses& classes, std::function<std::vector<std::string>()> verbs)
      : classes_(classes), verbs_(std::move(verbs)) {}
  CommandInfo GetInfo() const override;
  int Execute(const CommandArguments& arguments, CommandContext& context) override;

 private:
  const SceneClasses& classes_;
  std::function<std::vector<std::string>()> verbs_;
};

}  // namespace host
