// The run as one force, one burning channel, one set of fields: it asks its systems in turn.
#include "math/sparse_field_operators.h"
#include "simulation/simulation3d.h"

namespace nbx {

// The forces of the systems, then the velocity that the scene gives, which is used up.
void Simulation3D::add_forces(FluidSystem& fluid, double dt) {
  for (VelocityForce* force : forces_) force->add_forces(fluid, dt);
  for (int axis = 0; axis < 3; ++axis) {
    SparseField<float, 3>& given = *sources_.velocity_sources()[axis];
    if (given.empty()) continue;
    if (!fluid.component(axis).empty()) m_asxpy(domain.origin(), fluid.component(axis), 1, given);
    given.clear();
  }
}

bool Simulation3D::add_divergence(MField& target, double dt) {
  bool wrote = false;
  for (VelocityForce* force : forces_) wrote |= force->add_divergence(target, dt);
  if (!sources_.divergence().empty()) {
    target.provide(domain.center_dims());
    m_asxpy(domain.origin(), target, 1, sources_.divergence());
    wrote = true;
  }
  return wrote;
}

void Simulation3D::add_detail(FluidSystem& fluid) {
  for (VelocityForce* force : forces_) force->add_detail(fluid);
}

bool Simulation3D::combustion(MField& target, int key) {
  bool fed = false;
  for (CombustionSource* source : combustion_sources_) fed |= source->combustion(target, key);
  return fed;
}

MField* Simulation3D::channel_field(int key) {
  for (ScalarFluidChannel* channel : channels_)
    if (channel->key() == key) channel->forget_held();
  return get_field(key);
}

MField* Simulation3D::get_field(int key) {
  for (ScalarFluidChannel* channel : channels_)
    if (MField* field = channel->get_field(key)) return field;
  return nullptr;
}

}  // namespace nbx
