#include "simulation/fluid/conservation.h"

#include <algorithm>
#include <vector>

#include "math/field_checks.h"
#include "simulation/field_planes.h"
#include "simulation/fluid_tools3d.h"
#include "util/cuda_use_flags.h"

namespace nbx {

namespace {

// Rows are summed in lanes, planes row by row, fields plane by plane: the order of the sums depends
// only on the dimensions.
constexpr int kLanes = 8;

// The sum of n elements.
double sum_row(const float* x, int n) {
  double lanes[kLanes]{};
  int i = 0;
  for (; i + kLanes <= n; i += kLanes)
    for (int l = 0; l < kLanes; ++l) lanes[l] += x[i + l];
  double sum = 0;
  for (const double lane : lanes) sum += lane;
  for (; i < n; ++i) sum += x[i];
  return sum;
}

struct Totals {
  double mass = 0, up = 0, down = 0;
  Totals& operator+=(const Totals& other) {
    mass += other.mass;
    up += other.up;
    down += other.down;
    return *this;
  }
};

// Adds up of_plane(k) over the interior planes.
template <class OfPlane>
auto sum_planes(int nz, const OfPlane& of_plane) {
  using Sum = decltype(of_plane(0));
  std::vector<Sum> planes(std::max(nz, 0));
#pragma omp parallel for schedule(static)
  for (int k = 1; k < nz - 1; ++k) planes[k] = of_plane(k);
  Sum total{};
  for (const Sum& plane : planes) total += plane;
  return total;
}

// The room of one row of cells: how far each may rise, or fall, within the values around it.
struct Room {
  explicit Room(int n) : up(n), down(n) {}

  void measure(const Field<float>& f, int j, int k) {
    const float* const c = &f(1, j, k);
    const std::ptrdiff_t row = f.nx(), plane = row * f.ny();
    const auto lower = [](float a, float b) { return b < a ? b : a; };
    const auto higher = [](float a, float b) { return a < b ? b : a; };
    float *const to_up = up.data(), *const to_down = down.data();
    const int n = f.nx() - 2;
    for (int i = 0; i < n; ++i) {
      const float* const at = c + i;
      const float v = at[0];
      const float lo = lower(lower(lower(at[-1], at[1]), lower(at[-row], at[row])),
                             lower(lower(at[-plane], at[plane]), v));
      const float hi = higher(higher(higher(at[-1], at[1]), higher(at[-row], at[row])),
                              higher(higher(at[-plane], at[plane]), v));
      to_up[i] = higher(lower(hi - v, v), 0.0f);
      to_down[i] = v - lo;
    }
  }
  std::vector<float> up, down;
};

Totals measure(const Field<float>& f) {
  const int n = f.nx() - 2;
  return sum_planes(f.nz(), [&](int k) {
    Room room(n);
    Totals plane;
    for (int j = 1; j < f.ny() - 1; ++j) {
      room.measure(f, j, k);
      plane +=
          Totals{sum_row(&f(1, j, k), n), sum_row(room.up.data(), n), sum_row(room.down.data(), n)};
    }
    return plane;
  });
}

bool has_interior(const Field<float>& f) { return std::min({f.nx(), f.ny(), f.nz()}) >= 3; }

}  // namespace

std::array<bool, 6> channel_walls(const Domain& domain) {
  std::array<bool, 6> walls{};
  if (domain.wind.speed > 0) return walls;
  const std::array<int, 6> closed = domain.closed_faces();
  std::transform(closed.begin(), closed.end(), walls.begin(), [](int c) { return c != 0; });
  return walls;
}

void extend_to_walls(Field<float>& channel, const Domain& domain) {
  if (!has_interior(channel)) return;
  const std::array<bool, 6> walls = channel_walls(domain);
  for (int face = 0; face < 6; ++face) {
    if (!walls[face]) continue;
    const int axis = face / 2, n = channel.dims()[axis];
    const bool high = face % 2;
    iterate_slice(channel, axis, high ? n - 1 : 0, high ? n - 2 : 1, ClampBorderOper{});
  }
}

double total_inside(const Field<float>& channel) {
  if (!has_interior(channel)) return 0;
  const int n = channel.nx() - 2;
  return sum_planes(channel.nz(), [&](int k) {
    double plane = 0;
    for (int j = 1; j < channel.ny() - 1; ++j) plane += sum_row(&channel(1, j, k), n);
    return plane;
  });
}

double outflow(const Field<float>& channel, const Sweep& sweep, const std::array<bool, 6>& walls) {
  const Field<float>* const components[3] = {&sweep.U, &sweep.V, &sweep.W};
  const Vec3i n = channel.dims();
  double leaves = 0;
  for (int face = 0; face < 6; ++face) {
    if (walls[face]) continue;
    const int axis = face / 2, b = (axis + 1) % 3, c = (axis + 2) % 3;
    const bool high = face % 2;
    const double outward = high ? sweep.step : -sweep.step;
    const Field<float>& speed = *components[axis];
    Vec3i at;
    for (at[c] = 1; at[c] < n[c] - 1; ++at[c])
      for (at[b] = 1; at[b] < n[b] - 1; ++at[b]) {
        at[axis] = high ? n[axis] - 1 : 1;
        double left = outward * speed(at[0], at[1], at[2]);
        at[axis] = high ? n[axis] - 2 : 1;
        for (; left > 0 && at[axis] >= 1 && at[axis] <= n[axis] - 2; at[axis] += high ? -1 : 1) {
          leaves += std::min(left, 1.0) * channel(at[0], at[1], at[2]);
          left -= 1;
        }
      }
  }
  return leaves;
}

void thin_by_expansion(Field<float>& channel, const Sweep& sweep) {
  const Field<float>&U = sweep.U, &V = sweep.V, &W = sweep.W;
  const auto step = static_cast<float>(sweep.step);
  const int n = channel.nx() - 2;
#pragma omp parallel for schedule(static)
  for (int k = 1; k < channel.nz() - 1; ++k)
    for (int j = 1; j < channel.ny() - 1; ++j) {
      float* const c = &channel(1, j, k);
      const float *u = &U(1, j, k), *v = &V(1, j, k), *v1 = &V(1, j + 1, k), *w = &W(1, j, k),
                  *w1 = &W(1, j, k + 1);
      for (int i = 0; i < n; ++i) {
        const float d = ((u[i + 1] - u[i]) + (v1[i] - v[i]) + (w1[i] - w[i])) * step;
        c[i] = d > 0 ? c[i] / (1 + d) : c[i] * (1 - d);
      }
    }
}

void correct_total(Field<float>& dst, Field<float>& moved, double total) {
  check_dims(dst, moved);
  if (has_interior(moved)) {
    // Beyond the border there is nothing that a cell could take or give.
    clamp_border(moved);
    const Totals now = measure(moved);
    const bool rises = total > now.mass;
    double share = (total - now.mass) / (rises ? now.up : now.down);
    share = rises ? std::min(share, 1.0) : std::max(share, -1.0);
    if (!(share >= -1 && share <= 1)) share = 0;  // nothing has room, or values aren't finite
    const auto a = static_cast<float>(share);
    const int n = moved.nx() - 2;
#pragma omp parallel for schedule(static)
    for (int k = 1; k < moved.nz() - 1; ++k) {
      Room room(n);
      for (int j = 1; j < moved.ny() - 1; ++j) {
        room.measure(moved, j, k);
        const float* const weight = rises ? room.up.data() : room.down.data();
        const float* const from = &moved(1, j, k);
        float* const to = &dst(1, j, k);
        for (int i = 0; i < n; ++i) to[i] = from[i] + a * weight[i];
      }
    }
  }
  set_border(dst, 0.0f);
}

void advect_conserving(MField& field, AdvectionParams& params) {
  double total = 0;
  try_gpu(no_kernel, [&] {
    const Sweep sweep{params.velocity[0]->read_cpu(), params.velocity[1]->read_cpu(),
                      params.velocity[2]->read_cpu(), params.dt / params.dx};
    Field<float>& channel = field.write_cpu();
    check_mac(sweep.U, sweep.V, sweep.W, channel);
    total = total_inside(channel) - outflow(channel, sweep, channel_walls(*params.domain));
    thin_by_expansion(channel, sweep);
  });
  MField moved(thread_location(), field.dims());
  advect(moved, field, params);
  try_gpu(no_kernel, [&] {
    correct_total(field.overwrite_cpu(moved.dims()), moved.write_cpu(), std::max(total, 0.0));
  });
}

void displace_by_solids(MField& field, MField& own, MField& phi) {
  m_set_channel_inside_solid(phi, field, false, 0);
  try_gpu(no_kernel, [&] {
    Field<float>& gas = own.write_cpu();
    double displaced = total_inside(gas);
    set_channel_inside_solid(phi.read_cpu(), gas, false, 0);
    displaced -= total_inside(gas);
    if (displaced == 0) return;
    Field<float>& outside = field.write_cpu();
    correct_total(gas, outside, total_inside(outside) + displaced);
    field.swap(own);
  });
}

}  // namespace nbx
