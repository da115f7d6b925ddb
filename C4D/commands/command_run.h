// One run of `simulate`, from the options to the exit code: `check`, `make_cache`, then `run`.
#pragma once

#include <optional>
#include <string>

#include "C4D/run/simulation_thread.h"
#include "host/interface/command_data.h"
#include "util/outcome.h"

namespace nbx {

/// What --start-from names: the number of a frame, or nothing for a file.
std::optional<int> as_frame(const std::string& start_from);

class CommandRun {
 public:
  CommandRun(const host::CommandArguments& arguments, host::CommandContext& context,
             host::BaseObject& volume);

  /// Takes the options and checks the scene. Writes nothing. False after an error.
  bool check();
  /// Makes the folder of the cache. False after an error.
  bool make_cache();
  /// Simulates, and returns the exit code.
  int run();

 private:
  Outcome take_start();
  Outcome check_scene();
  Outcome take_cache();
  Outcome take_source();
  Outcome check_start();
  bool refuse(const Outcome& why) const;
  std::string cache_option(const std::string& cache) const;
  void wait(SimulationThread& thread, RunFrontEnd& front_end);

  const host::CommandArguments& arguments_;
  host::CommandContext& context_;
  host::BaseObject& volume_;
  host::BaseContainer& parameters_;
  const std::string subject_;
  RunRequest request_;
};

}  // namespace nbx
