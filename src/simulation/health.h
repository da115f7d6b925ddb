// Figures that show whether a run is healthy: sums and extremes of the state at the end of a frame.
#pragma once

#include <array>
#include <map>

namespace nbx {

class Simulation3D;

struct Health {
  std::map<int, double> mass;     // by ChannelKey: sum over the cells, times the volume of a cell
  double kinetic_energy = 0;      // per unit of density: half the squared speed, integrated
  double largest_divergence = 0;  // 1/s, including expansion
  double residual = 0;            // the largest of the frame's projections, 1/s
  double confined_volume = 0;     // gas that expanded in the frame and had nowhere to go
  int cycles = 0;                 // V-cycles of the last projection
  double cfl = 0;                 // cells that the fastest gas crossed in the last substep
  // Domain faces, x-, x+, y-, y+, z-, z+, whose outermost cells hold a channel's content.
  std::array<bool, 6> touches{};
};

/// Health::touches alone. Cheap while the active box touches no face of the domain.
std::array<bool, 6> touched_faces(Simulation3D& sim);

/// Whether any channel that frames hold has content, or any simulated channel if they hold none.
bool holds_gas(Simulation3D& sim);

/// Substeps that the CFL limit asks for in a frame in which the fastest gas is as fast as now. 0 if
/// that isn't known because the velocity is on the device.
double wanted_substeps(Simulation3D& sim);

/// Call it between frames, on the simulation thread.
Health measure_health(Simulation3D& sim);

}  // namespace nbx
