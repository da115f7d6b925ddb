// What the plug-in must know of a simulation that runs in the background when the host shuts down.
// Main thread only.
#pragma once

namespace nbx {

/// The owner of a simulation's thread. Both calls are made on the main thread.
class RunningSimulation {
 public:
  virtual ~RunningSimulation() = default;
  virtual bool is_running() const = 0;
  /// Asks it to stop at once, and doesn't wait.
  virtual void stop_at_once() = 0;
};

/// Names the one that is to be stopped at shutdown; null for none. It must stay until another one
/// or null is named.
void set_running_simulation(RunningSimulation* simulation);

/// Stops it if it runs. The host waits for its threads itself.
void stop_running_simulation();

}  // namespace nbx
