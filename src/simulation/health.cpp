#include "simulation/health.h"

#include <algorithm>
#include <cmath>

#include "math/field_reductions.h"
#include "simulation/fluid/velocity_reach.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/simulation3d.h"

namespace nbx {

namespace {

// Each plane has a sum of its own; the planes are added in order.
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

bool box_touches_a_face(const Domain& d) {
  bool touches = false;
  for (int axis = 0; axis < 3; ++axis)
    touches |= d.active_box.lo[axis] <= d.domain_box.lo[axis] ||
               d.active_box.hi[axis] >= d.domain_box.hi[axis];
  return touches;
}

void add_touched_faces(std::array<bool, 6>& touches, const Field<float>& channel, double threshold,
                       const Domain& d) {
  const IntBox local = min_bbox(channel, threshold);
  if (local.empty()) return;
  const IntBox content = d.in_domain(local);
  for (int axis = 0; axis < 3; ++axis) {
    touches[2 * axis] |= content.lo[axis] <= d.domain_box.lo[axis];
    touches[2 * axis + 1] |= content.hi[axis] >= d.domain_box.hi[axis];
  }
}

}  // namespace

std::array<bool, 6> touched_faces(Simulation3D& sim) {
  std::array<bool, 6> touches{};
  if (sim.domain.active_box.empty() || !box_touches_a_face(sim.domain)) return touches;
  for (int key : sim.params.simulated_channels)
    if (MField* channel = sim.channel_field(key))
      add_touched_faces(touches, channel->read_cpu(),
                        sim.params.channel_params.at(key).box_threshold, sim.domain);
  return touches;
}

bool holds_gas(Simulation3D& sim) {
  if (sim.domain.active_box.empty()) return false;
  const std::set<int>& simulated = sim.params.simulated_channels;
  const std::set<int>& cached = sim.sink.cached_channels;
  const auto is_cached = [&](int key) { return cached.contains(key); };
  const bool any_cached = std::ranges::any_of(simulated, is_cached);
  return std::ranges::any_of(simulated, [&](int key) {
    MField* channel = sim.channel_field(key);
    if (!channel || (any_cached && !is_cached(key))) return false;
    const Field<float>& values = channel->read_cpu();
    const double threshold = sim.params.channel_params.at(key).box_threshold;
    return std::any_of(values.data(), values.data() + values.count(),
                       [threshold](float value) { return value > threshold; });
  });
}

double wanted_substeps(Simulation3D& sim) {
  const MField& tracer = *sim.fluid().tracer_velocity()[0];
  if (tracer.empty() || tracer.location() != kCpu) return 0;
  return std::ceil(sim.clock.sim_time.length.value() / sim.fluid().max_step());
}

Health measure_health(Simulation3D& sim) {
  const Domain& domain = sim.domain;
  Health health;
  health.residual = sim.pressure().frame_residual();
  health.confined_volume = sim.pressure().frame_confined();
  health.cycles = sim.pressure().last_solve().cycles;
  if (domain.active_box.empty()) return health;

  const double cell = domain.dx * domain.dx * domain.dx;
  for (int key : sim.params.simulated_channels)
    if (MField* channel = sim.channel_field(key))
      health.mass[key] = sum(channel->read_cpu()) * cell;
  health.touches = touched_faces(sim);

  const Field<float>& U = sim.fluid().U().read_cpu();
  const Field<float>& V = sim.fluid().V().read_cpu();
  const Field<float>& W = sim.fluid().W().read_cpu();
  health.kinetic_energy = 0.5 * cell * (sum_of_squares(U) + sum_of_squares(V) + sum_of_squares(W));
  const std::array<MField*, 3> u = sim.fluid().tracer_velocity();
  health.cfl =
      max_velocity(u[0]->read_cpu(), u[1]->read_cpu(), u[2]->read_cpu()) * sim.clock.dt / domain.dx;
  const FieldHandle divergence = acquire_field(domain.center_dims());
  NegDivergence(*divergence, U, V, W, nullptr, 1 / domain.dx);
  health.largest_divergence = infnorm(*divergence);
  return health;
}

}  // namespace nbx
