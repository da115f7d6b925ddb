// Small interfaces between the parts of a run. They own nothing that they return, and are called
// only on the thread of the simulation.
#pragma once

#include <set>

#include "cache/sim_frame.h"
#include "math/mfield.h"

namespace nbx {

class FluidSystem;
class Simulation3D;

/// Finds the field of a channel.
class FieldSource {
 public:
  virtual ~FieldSource() = default;
  /// Null if there is no such channel or its field is empty.
  virtual MField* get_field(int key) = 0;
};

/// Pushes the gas.
class VelocityForce {
 public:
  virtual ~VelocityForce() = default;
  /// Adds dt times the force to the velocity.
  virtual void add_forces(FluidSystem& fluid, double dt) = 0;
  /// Adds the volume that appears per second and volume to a center field; true if it wrote. A
  /// field without storage gets it, filled with 0, from the first that writes.
  virtual bool add_divergence(MField& /*target*/, double /*dt*/) { return false; }
  /// Adds detail to a copy of the projected velocity.
  virtual void add_detail(FluidSystem& /*fluid*/) {}
};

/// Burns, and feeds other channels.
class CombustionSource {
 public:
  virtual ~CombustionSource() = default;
  /// Adds to the field of channel `key` what combustion gives it in this substep. True if it gives
  /// anything.
  virtual bool combustion(MField& target, int key) = 0;
};

/// State that frames hold.
class FrameStorable {
 public:
  virtual ~FrameStorable() = default;
  /// Adds the grids of the wanted ChannelKeys; `matrix` is the gridMatrix of the frame.
  virtual void store(SimFrame& frame, const std::set<int>& channels, const GridMatrix& matrix) = 0;
  /// Loads what the frame holds; a missing grid leaves the state as `clear` made it.
  virtual void load(SimFrame& frame) = 0;
};

/// Follows a run and may stop it.
class SimProgress {
 public:
  virtual ~SimProgress() = default;
  /// done = total reports a whole frame. False asks to stop at this point.
  virtual bool progress(int done, int total) = 0;
  /// A substep has ended, and the clock has advanced.
  virtual void substep_done(const Simulation3D& /*sim*/) {}
};

}  // namespace nbx
