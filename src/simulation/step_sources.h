// What the scene gives the gas within a substep: amounts of the channels, volume, velocity. It is
// collected in sparse fields over domain cells until the substep uses it up.
#pragma once

#include <array>
#include <map>

#include "math/sparse_field.h"
#include "simulation/domain.h"
#include "simulation/sim_interfaces.h"
#include "simulation/simulation_object_parameters.h"

namespace nbx {

/// The values are the same bits for any number of threads.
class StepSources {
 public:
  /// `gas` gives the current field of each channel, sized to the domain's active box. Both must
  /// outlive this.
  StepSources(FieldSource& gas, const Domain& domain) : gas_(gas), domain_(domain) {}

  /// Adds one source object; `weights` are in [0, 1] and stay as they are. An added amount adds up
  /// with the others. A set amount lifts the channel up to it and never lowers it. Channels that
  /// `gas` doesn't hold get nothing.
  void add_source_object(const SimulationObjectParameters& parameters,
                         const SparseField<float, 3>& weights);

  /// What a channel gains.
  SparseField<float, 3>& channel(int key) { return channels_[key]; }
  /// Volume that appears, per second and volume.
  SparseField<float, 3>& divergence() { return divergence_; }
  /// Velocity in simulation units per second on the faces across each axis: face (i, j, k) lies
  /// before cell (i, j, k).
  std::array<SparseField<float, 3>*, 3> velocity_sources() {
    return {&velocity_[0], &velocity_[1], &velocity_[2]};
  }
  /// The box of all cells and faces that receive anything.
  IntBox src_bbox() const;
  void clear();

  IntBox keep_box;         // cells that must stay in the active box, such as those around solids
  Affine3d world_to_grid;  // where the domain lies at the end of the substep

 private:
  void add_expansion(double amount, const SparseField<float, 3>& weights);

  FieldSource& gas_;
  const Domain& domain_;
  std::map<int, SparseField<float, 3>> channels_;  // by ChannelKey
  SparseField<float, 3> divergence_;
  std::array<SparseField<float, 3>, 3> velocity_;
};

}  // namespace nbx
