// The built-in command `render`: renders pictures of a scene.
#pragma once

#include <string>

#include "host/interface/command_data.h"

namespace host {

class RenderCommand final : public CommandData {
 public:
  /// `software` is the name and version of the program, for the metadata of pictures.
  explicit RenderCommand(std::string software) : software_(std::move(software)) {}
  CommandInfo GetInfo() const override;
  int Execute(const CommandArguments& arguments, CommandContext& context) override;

 private:
  std::string software_;
};

}  // namespace host
