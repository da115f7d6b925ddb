#include "simulation/health.h"

#include "math/field_reductions.h"
#include "simulation/fluid/velocity_reach.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/simulation3d.h"

namespace nbx {

namespace {

// The sum of the squares of the faces. Planes are summed on their own, then in order.
double sum_of_squares(const Field<float>& f) {
  std::vector<double> planes(f.nz());
#pragma omp parallel for schedule(static)
  for (int k = 0; k < f.nz(); ++k) {
    double plane = 0;
    const float* p = f.data() + f.index(0, 0, k);
    for (int i = 0; i < f.nx() * f.ny(); ++i) plane += static_cast<double>(p[i]) * p[i];
    planes[k] = plane;
  }
  double total = 0;
  for (double plane : planes) total += plane;
  return total;
}

// Of the velocity that carries the gas: with its detail, where there is one.
double largest_speed(FluidSystem& fluid) {
  const auto carrier = [&](int axis) -> const Field<float>& {
    MField& detail = fluid.detail(axis);
    return (detail.empty() ? fluid.component(axis) : detail).read_cpu();
  };
  return static_cast<double>(max_velocity(carrier(0), carrier(1), carrier(2)));
}

bool box_touches_a_face(const SimSettings& s) {
  bool touches = false;
  for (int axis = 0; axis < 3; ++axis)
    touches |= s.active_box.lo[axis] <= s.domain_box.lo[axis] ||
               s.active_box.hi[axis] >= s.domain_box.hi[axis];
  return touches;
}

void add_touched_faces(std::array<bool, 6>& touches, const Field<float>& channel, double threshold,
                       const SimSettings& s) {
  const IntBox content = min_bbox(channel, static_cast<float>(threshold));
  if (content.empty()) return;
  const Vec3i origin = s.active_box.lo - Vec3i(1, 1, 1);
  for (int axis = 0; axis < 3; ++axis) {
    const std::size_t low = 2 * static_cast<std::size_t>(axis);
    touches[low] |= content.lo[axis] + origin[axis] <= s.domain_box.lo[axis];
    touches[low + 1] |= content.hi[axis] + origin[axis] >= s.domain_box.hi[axis];
  }
}

}  // namespace

std::array<bool, 6> touched_faces(Simulation3D& sim) {
  const SimSettings& s = sim.settings;
  std::array<bool, 6> touches{};
  if (s.active_box.empty() || !box_touches_a_face(s)) return touches;
  for (int key : s.simulated_channels)
    if (MField* channel = sim.channel_field(key))
      add_touched_faces(touches, channel->read_cpu(), s.channel_params.at(key).box_threshold, s);
  return touches;
}

Health measure_health(Simulation3D& sim) {
  const SimSettings& s = sim.settings;
  Health health;
  health.residual = static_cast<double>(sim.pressure().last_solve().residual);
  health.cycles = sim.pressure().last_solve().cycles;
  if (s.active_box.empty()) return health;

  const double cell = s.dx * s.dx * s.dx;
  for (int key : s.simulated_channels)
    if (MField* channel = sim.channel_field(key))
      health.mass[key] = sum(channel->read_cpu()) * cell;
  health.touches = touched_faces(sim);

  const Field<float>& U = sim.fluid().U().read_cpu();
  const Field<float>& V = sim.fluid().V().read_cpu();
  const Field<float>& W = sim.fluid().W().read_cpu();
  health.kinetic_energy = 0.5 * cell * (sum_of_squares(U) + sum_of_squares(V) + sum_of_squares(W));
  health.cfl = largest_speed(sim.fluid()) * s.dt / s.dx;
  const FieldHandle divergence = acquire_field(s.active_box.size() + Vec3i(2, 2, 2));
  NegDivergence(*divergence, U, V, W, nullptr, 1 / s.dx);
  health.largest_divergence = static_cast<double>(infnorm(*divergence));
  return health;
}

}  // namespace nbx
