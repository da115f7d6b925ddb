// The host's own command `import`: a scene document from a modelling program's file.
#pragma once

#include "host/interface/command_data.h"

namespace host {

class ImportCommand final : public CommandData {
 public:
  CommandInfo GetInfo() const override;
  int Execute(const CommandArguments& arguments, CommandContext& context) override;
};

}  // namespace host
