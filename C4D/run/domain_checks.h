// Whether a domain can be simulated on this machine.
#pragma once

#include <string>

#include "C4D/settings/volume_grid.h"
#include "simulation/frame_sink.h"
#include "simulation/solver_params.h"
#include "util/outcome.h"

namespace nbx {

/// A failure, with the cure, if no simulation can have the volume's domain at the document's time,
/// or no frame file can hold it.
Outcome check_domain(const host::BaseObject& volume, double voxel_size);
/// The same for a run with these parameters.
Outcome check_domain(const host::BaseObject& volume, const SolverParams& params);

/// The memory that a run may need at most, once its gas fills the domain. Bytes; 0 is unknown.
struct RunMemory {
  double need = 0;
  double machine = 0, free = 0;
  std::string text;  // the three as a sentence, with a voxel size that fits

  bool exceeds_machine() const { return machine > 0 && need > machine; }
  bool exceeds_free() const { return free > 0 && need > free; }
};

RunMemory run_memory(const SolverParams& params, const FrameSink& sink,
                     const host::BaseObject& volume, bool has_solids);

/// The same for a run that has not been prepared, at the document's time.
RunMemory run_memory(host::BaseObject& volume, bool upres = false);

}  // namespace nbx
