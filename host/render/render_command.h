// The host's own command `render`: pictures of a scene.
#pragma once

#include <string>

#include "host/interface/command_data.h"

namespace host {

class RenderCommand final : public CommandData {
 public:
  /// `software` names the program and its version in the pictures.
  explicit RenderCommand(std::string software) : software_(std::move(software)) {}
  CommandInfo GetInfo() const override;
  int Execute(const CommandArguments& arguments, CommandContext& context) override;

 private:
  std::string software_;
};

}  // namespace host
