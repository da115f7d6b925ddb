// What the scene gives the gas within a substep: sources of the channels, volume that appears, and
// velocity. All passes split their work by block, so the results are the same bits for any number
// of threads.
#include <cmath>

#include "math/sparse_field_operators.h"
#include "simulation/simulation3d.h"

namespace nbx {

namespace {

using Sparse = SparseField<float, 3>;
constexpr int kEdge = Sparse::kEdge;

/// Calls work(block, held, next) for each block of `weights` on all threads: `held` is the block of
/// `target` at the same place, `next` the one `step` further; they are made where they are missing.
template <class Work>
void for_each_pair(Sparse& target, const Sparse& weights, const Vec3i& step, Work work) {
  std::vector<std::pair<float*, float*>> data;
  data.reserve(weights.blocks().size());
  for (const SparseBlockEntry& b : weights.blocks()) {
    float* held = target.hash_insert(b.x, b.y, b.z).data;
    data.emplace_back(held, target.hash_insert(b.x + step[0], b.y + step[1], b.z + step[2]).data);
  }
  const auto count = static_cast<std::ptrdiff_t>(data.size());
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const auto [held, next] = data[i];
    work(weights.blocks()[i].data, held, next);
  }
}

/// The low face of each cell gains d w; then the high face of each cell becomes d w^2. Inside of a
/// source, where w = 1, both are d.
void add_direction(Sparse& faces, const Sparse& weights, int axis, float d) {
  Vec3i step;
  step[axis] = kEdge;
  for_each_pair(faces, weights, step, [&](const float* w, float* held, float*) {
    for (int i = 0; i < Sparse::kBlockSize; ++i) held[i] += d * w[i];
  });
  const int stride = axis == 0 ? 1 : axis == 1 ? kEdge : kEdge * kEdge;
  for_each_pair(faces, weights, step, [&](const float* w, float* held, float* next) {
    for (int i = 0; i < Sparse::kBlockSize; ++i) {
      const bool last = i / stride % kEdge == kEdge - 1;
      float& high = last ? next[i - (kEdge - 1) * stride] : held[i + stride];
      high = d * w[i] * w[i];
    }
  });
}

/// The object's direction in the world's axes with z negated, with its length. The components count
/// along the grid's axes, so a domain that is turned turns the direction with it. Normals go by the
/// inverse transpose, so a direction stays square to the sides that it was square to.
Vec3d grid_direction(const SimulationObjectParameters& parameters) {
  const Affine3d inverted = inverse(parameters.transform);
  Vec3d turned;
  for (int i = 0; i < 3; ++i) turned += inverted.rows[i] * parameters.direction[i];
  return normalized(turned) * length(parameters.direction);
}

}  // namespace

void Simulation3D::add_source_object(const SimulationObjectParameters& parameters,
                                     const SparseField<float, 3>& weights) {
  const std::lock_guard lock(mutex_);
  for (ScalarFluidChannel* channel : channels_) channel->add_source(parameters, weights);
  const auto expansion = parameters.amounts.find(kExpansion);
  if (expansion != parameters.amounts.end() && expansion->second != 0)
    add_expansion(expansion->second, weights);
  if (parameters.direction == Vec3d()) return;
  const Vec3d d = grid_direction(parameters);
  for (int axis = 0; axis < 3; ++axis)
    add_direction(*velocity_sources()[axis], weights, axis, static_cast<float>(d[axis]));
}

void Simulation3D::clear_sources() {
  divergence_sources_.clear();
  for (SparseField<float, 3>* given : velocity_sources()) given->clear();
}

// Where sources overlap, the strongest counts.
void Simulation3D::add_expansion(double amount, const SparseField<float, 3>& weights) {
  const float a = amount;
  for_each_pair(divergence_sources_, weights, {}, [a](const float* w, float* held, float*) {
    for (int i = 0; i < Sparse::kBlockSize; ++i) {
      const float given = a * w[i];
      if (std::fabs(given) > std::fabs(held[i])) held[i] = given;
    }
  });
}

bool Simulation3D::add_divergence(MField& target, double dt) {
  bool wrote = false;
  for (VelocityForce* force : forces_) wrote |= force->add_divergence(target, dt);
  if (!divergence_sources_.empty()) {
    m_asxpy(settings.active_box.lo - Vec3i(1, 1, 1), target, 1, divergence_sources_);
    wrote = true;
  }
  return wrote;
}

// The forces of the systems, then the velocity that the scene gave, which is used up.
void Simulation3D::add_forces(FluidSystem& fluid, double dt) {
  for (VelocityForce* force : forces_) force->add_forces(fluid, dt);
  for (int axis = 0; axis < 3; ++axis) {
    SparseField<float, 3>& given = *velocity_sources()[axis];
    if (given.empty()) continue;
    if (!fluid.component(axis).empty())
      m_asxpy(settings.active_box.lo - Vec3i(1, 1, 1), fluid.component(axis), 1, given);
    given.clear();
  }
}

}  // namespace nbx
