#include "simulation/step_sources.h"

#include <cmath>

#include "math/sparse_field_operators.h"
#include "simulation/channel_key.h"

namespace nbx {

namespace {

using Sparse = SparseField<float, 3>;
constexpr int kEdge = Sparse::kEdge;

/// Calls work(block, held, next) for each block of `weights` on all threads: `held` is the block of
/// `target` at the same place, `next` the one that lies `step` further. Missing blocks are made.
template <class Work>
void for_each_pair(Sparse& target, const Sparse& weights, const Vec3i& step, Work work) {
  std::vector<std::pair<float*, float*>> data;
  data.reserve(weights.blocks().size());
  for (const SparseBlockEntry& b : weights.blocks()) {
    float* held = target.hash_insert(b.x, b.y, b.z).data;
    data.emplace_back(held, target.hash_insert(b.x + step[0], b.y + step[1], b.z + step[2]).data);
  }
  const std::ptrdiff_t count = data.size();
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

/// The object's direction in the world's axes with z negated; the length stays. The components are
/// used along the grid's axes, so a rotated domain rotates the direction with it. Directions are
/// transformed by the inverse transpose, like normals: they stay perpendicular to the same sides.
Vec3d grid_direction(const SimulationObjectParameters& parameters) {
  const Affine3d inverted = inverse(parameters.transform);
  Vec3d turned;
  for (int i = 0; i < 3; ++i) turned += inverted.rows[i] * parameters.direction[i];
  return normalized(turned) * length(parameters.direction);
}

}  // namespace

void StepSources::add_source_object(const SimulationObjectParameters& parameters,
                                    const Sparse& weights) {
  for (const auto& [key, amount] : parameters.amounts) {
    MField* held = gas_.get_field(key);
    if (!held || !(amount > 0)) continue;
    const float a = amount;
    if (parameters.add_keys.contains(key))
      sparse_axpy(channels_[key], a, weights);
    else
      sparse_raise(channels_[key], a, weights, domain_.origin(), held->read_cpu());
  }
  const auto expansion = parameters.amounts.find(kExpansion);
  if (expansion != parameters.amounts.end() && expansion->second != 0)
    add_expansion(expansion->second, weights);
  if (parameters.direction == Vec3d()) return;
  const Vec3d d = grid_direction(parameters);
  for (int axis = 0; axis < 3; ++axis) add_direction(velocity_[axis], weights, axis, d[axis]);
}

// Where sources overlap, the strongest counts.
void StepSources::add_expansion(double amount, const Sparse& weights) {
  const float a = amount;
  for_each_pair(divergence_, weights, {}, [a](const float* w, float* held, float*) {
    for (int i = 0; i < Sparse::kBlockSize; ++i) {
      const float given = a * w[i];
      if (std::fabs(given) > std::fabs(held[i])) held[i] = given;
    }
  });
}

IntBox StepSources::src_bbox() const {
  IntBox box = min_bbox(divergence_, 0);
  for (const Sparse& faces : velocity_) box = box_union(box, min_bbox(faces, 0));
  for (const auto& [key, cells] : channels_) box = box_union(box, min_bbox(cells, 0));
  return box;
}

void StepSources::clear() {
  divergence_.clear();
  for (Sparse& faces : velocity_) faces.clear();
  for (auto& [key, cells] : channels_) cells.clear();
}

}  // namespace nbx
