// The adaptive container: only the box that holds the gas, and what it can reach in a substep, is
// simulated. It grows, shrinks and moves with the content.
#include <algorithm>
#include <cmath>
#include <string>

#include "math/mfield_operations.h"
#include "simulation/simulation3d.h"
#include "util/log.h"

namespace nbx {

namespace {

std::string text(const Vec3i& v) {
  return "[" + std::to_string(v[0]) + "," + std::to_string(v[1]) + "," + std::to_string(v[2]) + "]";
}

// Closed faces belong to the container, so that they act as walls.
void reach_walls(IntBox& box, const Domain& domain) {
  for (int axis = 0; axis < 3; ++axis) {
    if (domain.face_closed[2 * axis] == 1) box.lo[axis] = domain.domain_box.lo[axis];
    if (domain.face_closed[2 * axis + 1] == 1) box.hi[axis] = domain.domain_box.hi[axis];
  }
}

}  // namespace

// Adds what the scene has just given; keeps all that is there.
void Simulation3D::grow_container(SceneEvaluator&) {
  const IntBox box = with_sources_and_walls(domain.active_box);
  apply_box(box_intersection(box, domain.domain_box));
}

// Rebuilds the box from `wanted`, the content, and the reach of its motion in a substep.
void Simulation3D::fit_container(const IntBox& wanted) {
  IntBox box = wanted;
  for (auto& system : systems_) {
    IntBox content;
    system->content_box(content);
    box = box_union(box, content);
  }
  box = with_sources_and_walls(box);
  if (!box.empty()) fluid_->grow_box(clock.dt, box);
  apply_box(box_intersection(box, domain.domain_box));
}

// The box of an up-resolution run is that of the coarse frame. It stays while there is none.
void Simulation3D::follow_source(SceneEvaluator&) {
  if (clock.step_index > 0) return;
  if (const std::optional<IntBox> box = upres_->open_source(source_cache)) apply_box(*box);
}

IntBox Simulation3D::with_sources_and_walls(const IntBox& content) const {
  IntBox box = box_union(content, sources_.src_bbox());
  if (!params.fit_to_walls) return box;
  box = box_union(box, sources_.keep_box);
  if (!box.empty()) reach_walls(box, domain);
  return box;
}

void Simulation3D::apply_box(const IntBox& box) {
  const IntBox old = domain.active_box;
  if (old == box || (old.empty() && box.empty())) return;
  LogMessage() << "Adapting container: " << text(box.lo) << "->" << text(box.hi) << " = "
               << text(box.size());
  domain.active_box = box;
  for (auto& system : systems_) system->resize(box.lo - old.lo);
}

// Makes room, before the projection, for the gas that expansion will push.
void Simulation3D::fit_container_to_expansion(SceneEvaluator&) {
  IntBox wanted;
  if (!domain.active_box.empty()) {
    MField divergence;
    if (add_divergence(divergence, clock.dt)) wanted = expanded_box(divergence);
  }
  fit_container(wanted);
}

// The box of the cells that expand, scaled about its center as its volume V grows in the step:
//
//     v = S dt + V,  s = (v / V)^(1/3),  each side moves out by g = s |h| - max h
//
// with S the sum of the divergence and h the half edges. Empty where nothing expands.
IntBox Simulation3D::expanded_box(MField& divergence) const {
  const IntBox cells = m_min_bbox(divergence, 0);
  if (cells.empty()) return {};
  const Vec3i size = cells.size();
  const double V = static_cast<double>(size[0]) * size[1] * size[2];
  const double v = m_sum(divergence) * clock.dt + V;
  if (!(v > V)) return {};
  const double s = std::cbrt(v / V);

  const Vec3d center = vector_cast<double>(cells.lo + cells.hi) * 0.5;
  const Vec3d h = vector_cast<double>(cells.hi) - center;
  const double g = s * length(h) - std::max({h[0], h[1], h[2]});
  IntBox box;
  for (int axis = 0; axis < 3; ++axis) {
    const int origin = domain.origin()[axis];
    // Huge expansions must not leave the range of int.
    const double reach = std::min(h[axis] + g, 1e8);
    box.lo[axis] = origin + static_cast<int>(std::floor(center[axis] - reach));
    box.hi[axis] = origin + static_cast<int>(std::ceil(center[axis] + reach));
  }
  return box;
}

}  // namespace nbx
