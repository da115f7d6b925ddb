#include "scene/vcvdt_post_process.h"

namespace nbx {

namespace {

/// A transform, and the distances between neighbors in memory.
class Sweep {
 public:
  explicit Sweep(VCVDT<float>& vdt)
      : v_(vdt), n_(vdt.dims()), stride_{1, std::size_t(n_[0]), std::size_t(n_[0]) * n_[1]} {}

  enum class Order { kAscending, kDescending };
  enum class Plane { kNone, kBelow, kAbove };

  /// The plane z, its rows and cells in that order. Each cell takes the shortest offset of its
  /// neighbors before it, and of its neighbor in the other plane.
  void plane(int z, Order order, Plane other) {
    const bool ascending = order == Order::kAscending;
    for (int row = 0; row < n_[1]; ++row)
      for (int cell = 0; cell < n_[0]; ++cell) {
        const int y = ascending ? row : n_[1] - 1 - row;
        const int x = ascending ? cell : n_[0] - 1 - cell;
        const std::size_t c = v_.index(x, y, z);
        if ((v_.label[c] & (kFixed | VCVDT<float>::kVotesMask)) != VCVDT<float>::kVote) continue;
        if (cell > 0) take_shorter(c, 0, ascending);
        if (row > 0) take_shorter(c, 1, ascending);
        if (other != Plane::kNone) take_shorter(c, 2, other == Plane::kBelow);
      }
  }

  int planes() const { return n_[2]; }

 private:
  static constexpr std::uint32_t kFixed = VCVDT<float>::kFixed, kIdMask = VCVDT<float>::kIdMask;

  /// Takes the offset of the neighbor on an axis plus one step to it, if that is shorter.
  void take_shorter(std::size_t c, std::size_t axis, bool from_below) {
    const std::size_t from = from_below ? c - stride_[axis] : c + stride_[axis];
    if (v_.dist2[from] >= VCVDT<float>::kFar) return;
    Vec3f way(v_.dx[from], v_.dy[from], v_.dz[from]);
    way[static_cast<int>(axis)] += from_below ? -1.0f : 1.0f;
    const float q = dot(way, way);
    if (!(q < v_.dist2[c])) return;
    v_.dx[c] = way[0];
    v_.dy[c] = way[1];
    v_.dz[c] = way[2];
    v_.dist2[c] = q;
    v_.label[c] = (v_.label[c] & ~kIdMask) | (v_.label[from] & kIdMask);
  }

  VCVDT<float>& v_;
  const Vec3i n_;
  const std::size_t stride_[3];
};

}  // namespace

// Upwards through the planes, a cell takes from x - 1, y - 1 and z - 1, then from x + 1 and y + 1.
// Then downwards, the other way round.
void sweep_inside(VCVDT<float>& vdt) {
  Sweep sweep(vdt);
  const int planes = sweep.planes();
  for (int z = 0; z < planes; ++z) {
    sweep.plane(z, Sweep::Order::kAscending, z > 0 ? Sweep::Plane::kBelow : Sweep::Plane::kNone);
    sweep.plane(z, Sweep::Order::kDescending, Sweep::Plane::kNone);
  }
  for (int z = planes - 1; z >= 0; --z) {
    const bool top = z == planes - 1;
    sweep.plane(z, Sweep::Order::kDescending, top ? Sweep::Plane::kNone : Sweep::Plane::kAbove);
    sweep.plane(z, Sweep::Order::kAscending, Sweep::Plane::kNone);
  }
}

}  // namespace nbx
