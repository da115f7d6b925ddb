// The small interfaces through which the parts of a run know each other. None of them owns what it
// hands out, and all are called on the simulation thread alone.
#pragma once

#include "cache/sim_frame.h"
#include "math/mfield.h"
#include "simulation/sim_settings.h"

namespace nbx {

class FluidSystem;
class Simulation3D;

/// Finds a channel's field by its key.
class FieldSource {
 public:
  virtual ~FieldSource() = default;
  /// Null if the key isn't held here or its field is empty.
  virtual MField* get_field(int key) = 0;
};

/// Pushes the gas.
class VelocityForce {
 public:
  virtual ~VelocityForce() = default;
  /// Adds dt times the force to the velocity.
  virtual void add_forces(FluidSystem& fluid, double dt) = 0;
  /// Adds the volume that appears per second and volume to a center field; true if it wrote.
  virtual bool add_divergence(MField& /*target*/, double /*dt*/) { return false; }
  /// Adds to the velocity with detail, which is already projected.
  virtual void add_detail(FluidSystem& /*fluid*/) {}
};

/// Burns, and feeds other channels.
class CombustionSource {
 public:
  virtual ~CombustionSource() = default;
  /// Adds to the field of channel `key` what combustion gives it in this substep.
  virtual void combustion(MField& target, int key) = 0;
};

/// State that goes into frames and comes back from them.
class FrameStorable {
 public:
  virtual ~FrameStorable() = default;
  /// Adds the grids that `settings` wants cached; `matrix` is the frame's gridMatrix.
  virtual void store(SimFrame& frame, const SimSettings& settings, const GridMatrix& matrix) = 0;
  /// Takes what the frame holds; a missing grid leaves the state as `clear` made it.
  virtual void load(SimFrame& frame) = 0;
};

/// Follows a run and may stop it.
class SimProgress {
 public:
  virtual ~SimProgress() = default;
  /// done = total reports a whole frame. False asks to stop at this point.
  virtual bool progress(int done, int total) = 0;
  /// A substep has ended; the counters in the settings stand after it.
  virtual void substep_done(const Simulation3D& /*sim*/) {}
};

/// The simulator's view of a scene. `dt` is the substep's length, 0 for the first frame.
class SceneEvaluator {
 public:
  virtual ~SceneEvaluator() = default;
  /// Refreshes `sim.settings`; parameters may be animated.
  virtual void read_settings(Simulation3D& sim, double dt) = 0;
  /// Hands the sources of this substep to `sim.add_source_object`.
  virtual void update_inputs(Simulation3D& sim, double dt) = 0;
  /// Sets `sim.solids` where the scene has solids.
  virtual void update_solids(Simulation3D& sim, double dt) = 0;
};

}  // namespace nbx
