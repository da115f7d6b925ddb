#include "C4D/running_simulation.h"

#include "util/log.h"

namespace nbx {

namespace {
RunningSimulation* running = nullptr;
}  // namespace

void set_running_simulation(RunningSimulation* simulation) { running = simulation; }

void stop_running_simulation() {
  if (!running || !running->is_running()) return;
  LogMessage() << "waiting for sim thread to terminate";
  running->stop_at_once();
}

}  // namespace nbx
