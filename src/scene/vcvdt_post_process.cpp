#include "scene/vcvdt_post_process.h"

namespace nbx {

namespace {

using Transform = VCVDT<float>;

/// The majority of the votes decides. A cell deep inside that no surface reached starts with the
/// distance 0, so that it is a seed if the surface has a hole.
void resolve_votes(Transform& vdt) {
  const auto n = static_cast<std::ptrdiff_t>(vdt.label.size());
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    const auto c = static_cast<std::size_t>(i);
    const bool inside = vdt.inside_votes(c) > vdt.votes / 2;
    vdt.label[c] &= ~Transform::kVotesMask;
    if (!inside) continue;
    vdt.label[c] |= Transform::kVote;
    if (vdt.dist2[c] >= Transform::kFar) vdt.dx[c] = vdt.dy[c] = vdt.dz[c] = vdt.dist2[c] = 0;
  }
}

bool at_surface(const Transform& vdt, int i, int j, int k) {
  const std::uint32_t own = vdt.label[vdt.index(i, j, k)] & Transform::kVotesMask;
  for (int z = k - 1; z <= k + 1; ++z)
    for (int y = j - 1; y <= j + 1; ++y)
      for (int x = i - 1; x <= i + 1; ++x)
        if ((vdt.label[vdt.index(x, y, z)] & Transform::kVotesMask) != own) return true;
  return false;
}

}  // namespace

void clearNonInterfacial(Transform& vdt) {
  const Vec3i n = vdt.dims();
  const auto outer = [n](int i, int j, int k) {
    return i == 0 || j == 0 || k == 0 || i == n[0] - 1 || j == n[1] - 1 || k == n[2] - 1;
  };
  // First the distances, from all labels; then the labels, from the distances.
#pragma omp parallel for schedule(static)
  for (int k = 0; k < n[2]; ++k)
    for (int j = 0; j < n[1]; ++j)
      for (int i = 0; i < n[0]; ++i)
        if (outer(i, j, k) || !at_surface(vdt, i, j, k)) {
          const std::size_t c = vdt.index(i, j, k);
          vdt.dx[c] = vdt.dy[c] = vdt.dz[c] = vdt.dist2[c] = Transform::kFar;
        }
#pragma omp parallel for schedule(static)
  for (int k = 0; k < n[2]; ++k)
    for (int j = 0; j < n[1]; ++j)
      for (int i = 0; i < n[0]; ++i) {
        std::uint32_t& label = vdt.label[vdt.index(i, j, k)];
        label &= ~Transform::kFixed;
        if (vdt.dist2(i, j, k) < Transform::kFar) label |= Transform::kFixed;
        if (outer(i, j, k)) label |= Transform::kNoId;
      }
}

void post_process_voxelized(Field<float>& phi, std::vector<std::int32_t>& ids, Transform& vdt) {
  resolve_votes(vdt);
  clearNonInterfacial(vdt);
  sweep_inside(vdt);

  phi.resize(vdt.dims());
  ids.resize(vdt.label.size());
  const auto n = static_cast<std::ptrdiff_t>(vdt.label.size());
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    const auto c = static_cast<std::size_t>(i);
    phi[c] = vdt.inside_votes(c) ? -vdt.dist2[c] : vdt.dist2[c];
    const std::uint32_t id = vdt.label[c] & Transform::kIdMask;
    ids[c] = id == Transform::kNoId ? -1 : static_cast<std::int32_t>(id);
  }
}

}  // namespace nbx
