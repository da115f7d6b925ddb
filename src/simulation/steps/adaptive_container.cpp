// The adaptive container: Simulation3D simulates only the box that holds what exists now and what
// can appear within a step. It grows, shrinks and moves with the content.
#include <algorithm>
#include <cmath>
#include <string>

#include "math/mfield_operations.h"
#include "math/sparse_field_operators.h"
#include "simulation/simulation3d.h"
#include "util/log.h"

namespace nbx {

namespace {

std::string text(const Vec3i& v) {
  return "[" + std::to_string(v[0]) + "," + std::to_string(v[1]) + "," + std::to_string(v[2]) + "]";
}

// Closed faces stay in the container, so that they act as walls.
void reach_walls(IntBox& box, const SimSettings& settings) {
  for (int axis = 0; axis < 3; ++axis) {
    const std::size_t low = 2 * static_cast<std::size_t>(axis), high = low + 1;
    if (settings.face_closed[low] == 1) box.lo[axis] = settings.domain_box.lo[axis];
    if (settings.face_closed[high] == 1) box.hi[axis] = settings.domain_box.hi[axis];
  }
}

}  // namespace

// Finds the new box and applies it. `grow_only` starts from the present box and adds what was just
// received; else the box is made from the content. `wanted` is added in either case. Unless
// `skip_reach`, what a step's motion can reach is added too.
void Simulation3D::adapt(double dt, const IntBox& wanted, bool grow_only, bool skip_reach) {
  IntBox box = grow_only ? settings.active_box : IntBox();
  box = box_union(box, min_bbox(divergence_sources_, 0));
  for (const SparseField<float, 3>* given : velocity_sources())
    box = box_union(box, min_bbox(*given, 0));
  for (auto& system : systems_) {
    IntBox part;
    if (grow_only)
      system->src_bbox(part);
    else
      system->content_box(part);
    box = box_union(box, part);
  }
  box = box_union(box, wanted);
  if (settings.fit_to_walls) {
    box = box_union(box, keep_box);
    if (!box.empty()) reach_walls(box, settings);
  }
  if (!skip_reach && !box.empty()) fluid_->grow_box(dt, box);
  apply_box(box_intersection(box, settings.domain_box));
}

void Simulation3D::apply_box(const IntBox& box) {
  const IntBox old = settings.active_box;
  if (old == box || (old.empty() && box.empty())) return;
  LogMessage() << "Adapting container: " << text(box.lo) << "->" << text(box.hi) << " = "
               << text(box.size());
  settings.active_box = box;
  for (auto& system : systems_) system->resize(box.lo - old.lo);
}

// How far the coming projection will push the gas apart, so that the box can grow before it.
void Simulation3D::adapt_to_expansion() {
  IntBox wanted;
  if (!settings.active_box.empty()) {
    MField divergence(thread_location(), settings.active_box.size() + Vec3i(2, 2, 2));
    divergence.zero();
    if (add_divergence(divergence, settings.dt)) wanted = expanded_box(divergence);
  }
  adapt(settings.dt, wanted, false, false);
}

// The box of the cells that expand, scaled about its center as the volume V in it grows in the
// step:
//
//     v = S dt + V,  s = (v / V)^(1/3),  each side moves out by g = s |h| - max h
//
// with S the sum of the divergence and h the half edges. Empty where nothing expands.
IntBox Simulation3D::expanded_box(MField& divergence) const {
  const IntBox cells = m_min_bbox(divergence, 0);
  if (cells.empty()) return {};
  const Vec3i size = cells.size();
  const double V = static_cast<double>(size[0]) * size[1] * size[2];
  const double v = m_sum(divergence) * settings.dt + V;
  if (!(v > V)) return {};
  const double s = std::cbrt(v / V);

  const Vec3d center = vector_cast<double>(cells.lo + cells.hi) * 0.5;
  const Vec3d h = vector_cast<double>(cells.hi) - center;
  const double g = s * length(h) - std::max({h[0], h[1], h[2]});
  IntBox box;
  for (int axis = 0; axis < 3; ++axis) {
    const int origin = settings.active_box.lo[axis] - 1;
    // Beyond the domain nothing counts, and huge expansions must not leave the range of int.
    const double reach = std::min(h[axis] + g, 1e8);
    box.lo[axis] = origin + static_cast<int>(std::floor(center[axis] - reach));
    box.hi[axis] = origin + static_cast<int>(std::ceil(center[axis] + reach));
  }
  return box;
}

}  // namespace nbx
