// One run of `simulate`, from the options to the exit code.
#pragma once

#include <string>

#include "C4D/run/simulation_thread.h"
#include "host/interface/command_data.h"
#include "util/outcome.h"

namespace nbx {

class CommandRun {
 public:
  CommandRun(const host::CommandArguments& arguments, host::CommandContext& context,
             host::BaseObject& volume);

  int run();

 private:
  Outcome take_state();
  Outcome take_cache();
  void wait(SimulationThread& thread, RunFrontEnd& front_end);

  const host::CommandArguments& arguments_;
  host::CommandContext& context_;
  host::BaseObject& volume_;
  host::BaseContainer& parameters_;
  const std::string subject_;
};

}  // namespace nbx
