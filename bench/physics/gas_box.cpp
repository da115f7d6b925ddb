#include "bench/physics/gas_box.h"

#include <cmath>

namespace nbx::physics {

GasBox::GasBox(const Vec3i& cells, double dx, const Faces& closed) : cells_(cells) {
  setup.domain_box = {{0, 0, 0}, cells - Vec3i(1, 1, 1)};
  setup.dx = dx;
  setup.face_closed = closed;
  run.params.max_substeps = 1;
  run.params.simulated_channels = {kDensity, kTemperature};
  for (auto& [key, channel] : run.params.channel_params) channel.buoyancy = 0;
  run.init_state(*this);
}

Vec3d GasBox::center(int i, int j, int k) const { return Vec3d(i - 0.5, j - 0.5, k - 0.5) * dx(); }

Vec3d GasBox::face(int axis, int i, int j, int k) const {
  Vec3d x = center(i, j, k);
  x[axis] -= 0.5 * dx();
  return x;
}

void GasBox::set_faces(const std::function<Vec3d(const Vec3d&)>& velocity) {
  for (int axis = 0; axis < 3; ++axis) {
    Field<float>& f = run.fluid().component(axis).write_cpu();
    for (int k = 0; k < f.nz(); ++k)
      for (int j = 0; j < f.ny(); ++j)
        for (int i = 0; i < f.nx(); ++i)
          f(i, j, k) = static_cast<float>(velocity(face(axis, i, j, k))[axis]);
  }
  run.fluid().set_zero_velocity(false);
}

void GasBox::set_velocity(const std::function<Vec3d(const Vec3d&)>& velocity) {
  set_faces(velocity);
  project();
}

void GasBox::set_channel(int key, const std::function<double(const Vec3d&)>& value) {
  Field<float>& f = run.channel_field(key)->write_cpu();
  for_cells(cells_,
            [&](int i, int j, int k) { f(i, j, k) = static_cast<float>(value(center(i, j, k))); });
}

void GasBox::set_buoyancy(int key, double acceleration) {
  ChannelParams& channel = run.params.channel_params[key];
  channel.buoyancy = acceleration;
  channel.direction = {0, 1, 0};
}

// Times are fractions: whole nanoseconds are exact.
void GasBox::step(double dt) {
  FrameTime frame;
  frame.length = {std::round(dt * 1e9), 1e9};
  run.clock.sim_time = frame;
  run.clock.frame_duration = frame.length.value();
  run.update(*this, frame, nullptr);
  time += frame.time.value();
}

void GasBox::step_cfl(double cfl) {
  run.params.cfl = cfl;
  step(run.fluid().max_step());
}

double GasBox::max_speed() { return run.params.cfl * dx() / run.fluid().max_step(); }

void GasBox::update_inputs(const RunView&, StepSources& given, double) {
  given.keep_box = setup.domain_box;
  if (sources) sources(given);
}

Solids GasBox::update_solids(const RunView& view, double dt) {
  return solids ? solids(view.domain, time + dt) : Solids();
}

// Sources count cells from 0.
Weights weights_where(const Vec3i& cells, const std::function<bool(const Vec3i&)>& holds) {
  using Sparse = SparseField<float, 3>;
  auto weights = std::make_shared<Sparse>();
  for_cells(cells, [&](int i, int j, int k) {
    const Vec3i at(i - 1, j - 1, k - 1);
    if (!holds(at)) return;
    weights->hash_insert(at[0], at[1], at[2])
        .data[Sparse::voxel_index(at[0] & 7, at[1] & 7, at[2] & 7)] = 1;
  });
  return weights;
}

}  // namespace nbx::physics
