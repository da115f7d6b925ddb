// Runs the simulation of one volume object from its first frame to its last, on the calling thread.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "C4D/emitter_sampler.h"
#include "C4D/run_report.h"
#include "C4D/solid_sampler.h"
#include "host/interface/command_data.h"
#include "simulation/simulation3d.h"

namespace nbx {

/// Frame numbers, both included.
struct RunRange {
  int first = 0, last = 0;
};

/// The range that the volume object's parameters select.
RunRange run_range(const host::BaseObject& volume);

class SimulationDriver final : private SceneEvaluator, private SimProgress {
 public:
  /// `directory` receives the frames; it is made if it is missing.
  SimulationDriver(host::BaseObject& volume, const RunRange& range, std::string directory,
                   host::CommandContext& context);

  /// The whole run. Whatever happens is told to the context, nothing is thrown, and the document is
  /// back at its time in the end. Frames stored before a failure or an interrupt stay.
  host::ExitCode run();

 private:
  bool prepare();
  bool domain_fits();
  bool open_cache();
  void simulate();
  host::ExitCode finish();

  bool refuse(const std::string& why);
  void report_frame();

  void read_settings(Simulation3D& sim, double dt) override;
  void update_inputs(Simulation3D& sim, double dt) override;
  void update_solids(Simulation3D& sim, double dt) override;
  bool progress(int done, int total) override;
  void substep_done(const Simulation3D& sim) override;

  host::BaseObject& volume_;
  host::BaseDocument& document_;
  const RunRange range_;
  const std::string directory_;
  host::CommandContext& context_;

  FrameTime time_;  // document time of the last finished frame
  std::unique_ptr<Simulation3D> sim_;
  std::unique_ptr<EmitterSampler> emitters_;
  std::unique_ptr<SolidSampler> solids_;
  RunReport report_;
};

}  // namespace nbx
