// The cases: each simulates a flow that theory describes, and measures it. Tests run the functions
// with plain arguments at sizes of their own.
#pragma once

#include "bench/physics/result.h"

namespace nbx::physics {

/// Scenes that equal their mirror images, and how far the gas departs from that.
Result symmetry(Effort effort);

/// A steady vortex that numerical viscosity slows down.
Result taylor_green(Effort effort);
struct VortexChange {
  double energy_lost;          // of 1, after the time 1, in the middle of the box
  double energy_lost_at_wall;  // in the layer of cells next to a wall
  double change;               // root of the mean square, where the largest speed is 1
};
VortexChange taylor_green_change(int cells, int interp_points, double cfl);

/// A disc that is carried once round.
Result disc(Effort effort);
struct DiscState {
  double error = 0;  // sum of the differences to the start, over the sum of the start
  double mass = 0;   // of the start's
  double peak = 0;
  double lag = 0;                   // angle by which the disc is late
  double lag_of_midpoint_rule = 0;  // what theory says
};
DiscState turn_disc(int cells, double cfl, int interp_points);

/// A vortex ring under its own velocity. `cells` is half the width of the box.
Result ring(Effort effort);
struct RingMotion {
  double speed = 0, theory = 0;
  std::vector<std::vector<double>> rows;  // time, height, radius, core, circulation
};
RingMotion move_ring(int cells, int interp_points);

/// The growth of waves on a round shear layer.
Result shear(Effort effort);
struct ShearGrowth {
  double rate = 0, theory = 0;            // per second
  std::vector<std::vector<double>> rows;  // time, amplitude, amplitude by theory
};
ShearGrowth grow_shear(int cells, int waves, int interp_points);

/// A bubble of hot gas that rises in a shaft.
Result bubble(Effort effort);

/// A cloud that rises and a steady plume, against the laws of similarity.
Result thermal(Effort effort);
Result plume(Effort effort);

/// A ball that moves through gas at rest, and one at rest in a wind.
Result ball(Effort effort);

}  // namespace nbx::physics
