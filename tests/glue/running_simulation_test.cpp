// What happens at shutdown to a simulation that runs.
#include "C4D/running_simulation.h"

#include "support/support.h"

namespace nbx {
namespace {

TEST(RunningSimulation, IsAskedToStopOnlyWhileItRuns) {
  struct Run final : RunningSimulation {
    bool is_running() const override { return running; }
    void stop_at_once() override { ++stops; }
    bool running = false;
    int stops = 0;
  } run;
  const test::LogCapture log;
  stop_running_simulation();
  set_running_simulation(&run);
  stop_running_simulation();
  EXPECT_EQ(run.stops, 0);
  run.running = true;
  stop_running_simulation();
  set_running_simulation(nullptr);
  stop_running_simulation();
  EXPECT_EQ(run.stops, 1);
  EXPECT_EQ(log.count("waiting for sim thread to terminate"), 1);
}

}  // namespace
}  // namespace nbx
