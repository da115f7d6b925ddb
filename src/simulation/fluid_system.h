// The velocity of the gas on the faces of the staggered grid, as state: its size, its wind, how
// frames hold it. The derived class moves it.
#pragma once

#include <array>

#include "math/occupancy.h"
#include "simulation/sim_system.h"
#include "simulation/steps/pressure_system.h"

namespace nbx {

class FluidSystem : public SimSystem, public FrameStorable {
 public:
  using SimSystem::SimSystem;

  /// Moves a channel's field, which holds nothing but in the parts of `held`, along the current
  /// velocity. `conserve` keeps its total.
  virtual void advect_field(MField& field, const Occupancy& held, bool conserve) = 0;
  /// Moves the velocity along itself.
  virtual void advect_velocity() = 0;
  /// Applies forces and projects.
  virtual void update(double dt, PressureSystem& pressure, VelocityForce& forces,
                      SolverProgress& progress) = 0;
  /// The longest stable step in seconds.
  virtual double max_step() = 0;
  /// Extends a box of domain cells to what its gas can reach in `dt`.
  virtual void grow_box(double dt, IntBox& box) = 0;

  void resize(const Vec3i& delta) override;
  /// Lets the velocity follow a change of wind.
  void begin_step() override;
  void content_box(IntBox& box) override;
  void clear() override;

  void store(SimFrame& frame, const std::set<int>& channels, const GridMatrix& matrix) override;
  /// Loads the plain velocity and the one with detail. Frames for rendering hold only the one that
  /// is shown: it becomes the plain one. Without any, the gas moves with the wind.
  void load(SimFrame& frame) override;
  /// True if the frame holds the velocity that is shown.
  static bool has_velocity(const SimFrame& frame);

  MField& component(int axis) { return velocity_[axis]; }
  MField& U() { return velocity_[0]; }
  MField& V() { return velocity_[1]; }
  MField& W() { return velocity_[2]; }

  /// The velocity with its detail; empty while there is no noise.
  MField& detail(int axis) { return detail_[axis]; }

  /// The velocity is 0 everywhere: advection and projection can be skipped.
  bool zero_velocity() const { return zero_velocity_; }
  void set_zero_velocity(bool zero) { zero_velocity_ = zero; }

  /// The velocity that carries everything: each component with its detail, if it has one.
  std::array<MField*, 3> tracer_velocity();

  /// The wind that is part of the velocity now. Frames don't hold it: a run that continues from one
  /// must set it.
  const Wind& wind_seen() const { return wind_seen_; }
  void set_wind_seen(const Wind& wind) { wind_seen_ = wind; }

 protected:
  bool has_detail() const { return !detail_[0].empty(); }
  void release_detail();
  void apply_boundary();

  std::array<MField, 3> velocity_;
  std::array<MField, 3> detail_;  // velocity with detail of the last frame, or empty
  bool zero_velocity_ = true;

 private:
  void redim(const Vec3i& delta, std::array<MField, 3>& components);
  bool detail_is_velocity();

  Wind wind_seen_;
};

}  // namespace nbx
