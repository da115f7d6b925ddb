// Operators on velocities on faces, compared with plain forms.
#include <algorithm>
#include <cmath>
#include <limits>

#include "simulation/fluid/curl_noise.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/mac.h"
#include "simulation/vorticity.h"
#include "util/exception.h"

namespace nbx {
namespace {

using test::each_cell;
using test::everywhere;
using test::fill_random;
using test::Mac;
using test::same_bits;

// Faces and centers of a small grid that is odd on one axis and longer than a vector on another.
struct Grid : Mac {
  static constexpr int nx = 37, ny = 6, nz = 9;
  Field<float> center{nx, ny, nz}, phi{nx, ny, nz};

  Grid() : Mac({nx, ny, nz}) {
    randomize(1);
    fill_random(center, 4);
    fill_random(phi, 5);
    phi(5, 2, 3) = 0;  // a cell on the surface is solid
  }
};

TEST(FluidTools, SubtractPressureGradient) {
  const double dx = 0.3;
  for (const bool solid : {false, true}) {
    Grid plain;
    const Field<float>&p = plain.center, &phi = plain.phi;
    for (int axis = 0; axis < 3; ++axis)
      each_cell({plain.nx + 1, plain.ny + 1, plain.nz + 1}, 1, [&](int i, int j, int k) {
        const int bi = i - (axis == 0), bj = j - (axis == 1), bk = k - (axis == 2);
        if (solid && !(phi(i, j, k) > 0 && phi(bi, bj, bk) > 0)) return;
        float& u = plain.face(axis)(i, j, k);
        u = static_cast<float>(double(u) - (double(p(i, j, k)) - double(p(bi, bj, bk))) * dx);
      });
    everywhere([&] {
      Grid g;
      subtract_pressure_gradient(g.U, g.V, g.W, g.center, dx, solid ? &g.phi : nullptr);
      EXPECT_TRUE(g.same(plain));
      EXPECT_THROW(subtract_pressure_gradient(g.U, g.U, g.W, g.center, dx, nullptr),
                   FieldDimensionMismatchException);
    });
  }
}

// The center field is clamped to [0, 1]; NaN counts as 0.
TEST(FluidTools, AddCenterToMac) {
  Grid plain;
  const float odd[] = {7, -4, 0.25f, std::numeric_limits<float>::quiet_NaN()};
  for (std::size_t i = 0; i < plain.center.count(); ++i) plain.center[i] = odd[i * i % 7 % 4];
  const auto held = [&](int i, int j, int k) {
    const float v = plain.center(i, j, k);
    return v > 0 ? std::min(v, 1.0f) : 0.0f;
  };
  Grid expected;
  each_cell({plain.nx + 1, plain.ny + 1, plain.nz + 1}, 1, [&](int i, int j, int k) {
    expected.U(i, j, k) += 0.5f * (held(i, j, k) + held(i - 1, j, k));
    expected.W(i, j, k) -= 2 * (held(i, j, k) + held(i, j, k - 1));
  });
  everywhere([&] {
    Grid g;
    add_center_to_mac(g.U, g.V, g.W, plain.center, 0.5f, 0, -2);
    EXPECT_TRUE(g.same(expected));
  });
}

Domain boxed(const std::array<int, 6>& closed) {
  Domain domain;
  domain.domain_box = domain.active_box = {{0, 0, 0}, {20, 20, 20}};
  domain.face_closed = closed;
  return domain;
}

void velocity_boundary(int axis, Field<float>& f, const Domain& domain) {
  (axis == 0 ? VelocityBoundaryU : axis == 1 ? VelocityBoundaryV : VelocityBoundaryW)(f, domain);
}

TEST(FluidTools, VelocityBoundaryHoldsWallsAndLetsFlowOnlyOut) {
  for (int axis = 0; axis < 3; ++axis)
    for (const bool wall : {false, true}) {
      std::array<int, 6> closed{};
      closed[2 * axis + 1] = wall;
      Grid g, before;
      Field<float>& f = g.face(axis);
      velocity_boundary(axis, f, boxed(closed));
      const Vec3i n = f.dims();
      each_cell(n, 0, [&](int i, int j, int k) {
        Vec3i at(i, j, k), in = at;
        int outer = 0;
        for (int a = 0; a < 3; ++a) {
          in[a] = std::clamp(at[a], 1, n[a] - 2);
          outer += in[a] != at[a];
        }
        float expected = before.face(axis)(in[0], in[1], in[2]);
        if (wall && in[axis] == n[axis] - 2) expected = 0;
        if (at[axis] == 0) expected = std::min(expected, 0.0f);
        if (at[axis] == n[axis] - 1) expected = std::max(expected, 0.0f);
        if (outer > 1) expected = 0;
        ASSERT_EQ(f(i, j, k), expected) << axis << " at " << i << " " << j << " " << k;
      });
    }
}

TEST(FluidTools, WallsHoldWhereTheActiveBoxTouchesThemAndWithoutWind) {
  Domain domain = boxed({1, 1, 1, 1, 1, 0});
  domain.active_box = {{1, 0, 0}, {19, 21, 20}};
  EXPECT_EQ(domain.closed_faces(), (std::array<int, 6>{0, 0, 1, 1, 1, 0}));
  domain.active_box = domain.domain_box;
  domain.wind = {{0.5, -0.25, 0.75}, 4};
  for (int axis = 0; axis < 3; ++axis) {
    Grid g, expected;
    velocity_boundary(axis, g.face(axis), domain);
    set_border(expected.face(axis), static_cast<float>(4 * domain.wind.direction[axis]));
    EXPECT_TRUE(same_bits(g.face(axis), expected.face(axis)));
  }
}

TEST(FluidTools, FacesOfSolidsTakeTheSolidsVelocity) {
  everywhere([] {
    Grid g, solid;
    for (int axis = 0; axis < 3; ++axis) set(solid.face(axis), 10);
    set(g.phi, 1);
    // Within, in the last cell of a row, and ghosts at both of its ends.
    g.phi(5, 3, 4) = g.phi(g.nx - 2, 1, 1) = g.phi(0, 4, 4) = g.phi(g.nx - 1, 4, 4) = -1;
    constrainBoundaryVelocityT(g.phi, solid.U, solid.V, solid.W, g.U, g.V, g.W);
    EXPECT_EQ(g.U(5, 3, 4) + g.U(6, 3, 4) + g.V(5, 3, 4) + g.V(5, 4, 4), 40);
    EXPECT_EQ(g.W(5, 3, 4) + g.W(5, 3, 5) + g.U(g.nx - 1, 1, 1), 30);
    EXPECT_EQ(g.U(1, 4, 4) + g.U(g.nx - 1, 4, 4), 20);
    std::ptrdiff_t held = 0;
    for (Field<float>* f : {&g.U, &g.V, &g.W})
      held += std::count(f->data(), f->data() + f->count(), 10.0f);
    EXPECT_EQ(held, 14);
    // A solid ghost at a far side holds the last face before it.
    g.phi(7, g.ny - 1, 4) = g.phi(7, 4, g.nz - 1) = -1;
    constrainBoundaryVelocityT(g.phi, solid.U, solid.V, solid.W, g.U, g.V, g.W);
    EXPECT_EQ(g.V(7, g.ny - 1, 4) + g.W(7, 4, g.nz - 1), 20);
  });
}

// Solid fills all below `surface` along an axis, and the channel grows by 1 from cell to cell. The
// surface lies between the cells 5 and 6, and only 6 is fluid. Cells deeper than the root of 12
// don't find it.
TEST(FluidTools, ChannelInsideSolid) {
  for (int axis = 0; axis < 3; ++axis)
    for (const float surface : {5.46f, 5.47f})
      for (const bool extrapolate : {false, true}) {
        Vec3i n(5, 5, 5);
        n[axis] = 10;
        Field<float> channel =
            test::field_of(n, [&](int i, int j, int k) { return Vec3i(i, j, k)[axis]; });
        const Field<float> phi = test::field_of(n, [&](int i, int j, int k) {
          const float distance = channel(i, j, k) - surface;
          return distance * std::abs(distance);
        });
        set_channel_inside_solid(phi, channel, extrapolate, -3);
        const int reached = !extrapolate ? 6 : surface < 5.465f ? 2 : 3;
        for (int i = 0; i < 9; ++i) {
          Vec3i at(2, 2, 2);
          at[axis] = i;
          const float expected = i == 0        ? 0.0f  // a ghost
                                 : i < reached ? -3.0f
                                               : std::max(extrapolate ? 6.0f : 0.0f, float(i));
          EXPECT_EQ(channel(at[0], at[1], at[2]), expected) << axis << " " << surface << " " << i;
        }
      }
}

const Vec3i kSizes[] = {{1, 1, 1}, {2, 5, 5}, {3, 3, 3},   {4, 6, 5},
                        {5, 5, 5}, {9, 7, 8}, {34, 19, 6}, {67, 5, 11}};

struct Center3 {
  explicit Center3(const Vec3i& n)
      : x(n[0], n[1], n[2]), y(n[0], n[1], n[2]), z(n[0], n[1], n[2]), mag(n[0], n[1], n[2]) {}
  bool same(const Center3& b) const {
    return same_bits(x, b.x) && same_bits(y, b.y) && same_bits(z, b.z) && same_bits(mag, b.mag);
  }
  Field<float> x, y, z, mag;
};

// The plain forms, cell by cell. Ghost cells take the nearest interior cell.
void plain_curl(Center3& w, const Mac& m, float dx) {
  const auto u = [&](int i, int j, int k) { return (m.U(i, j, k) + m.U(i + 1, j, k)) / 2; };
  const auto v = [&](int i, int j, int k) { return (m.V(i, j, k) + m.V(i, j + 1, k)) / 2; };
  const auto c = [&](int i, int j, int k) { return (m.W(i, j, k) + m.W(i, j, k + 1)) / 2; };
  const Vec3i n = w.x.dims();
  const float s = 1 / (2 * dx);
  const bool interior = n[0] > 2 && n[1] > 2 && n[2] > 2;
  each_cell(n, 0, [&](int gi, int gj, int gk) {
    if (!interior) {
      w.x(gi, gj, gk) = w.y(gi, gj, gk) = w.z(gi, gj, gk) = w.mag(gi, gj, gk) = 0;
      return;
    }
    const int i = std::clamp(gi, 1, n[0] - 2), j = std::clamp(gj, 1, n[1] - 2);
    const int k = std::clamp(gk, 1, n[2] - 2);
    const float x = ((c(i, j + 1, k) - c(i, j - 1, k)) - (v(i, j, k + 1) - v(i, j, k - 1))) * s;
    const float y = ((u(i, j, k + 1) - u(i, j, k - 1)) - (c(i + 1, j, k) - c(i - 1, j, k))) * s;
    const float z = ((v(i + 1, j, k) - v(i - 1, j, k)) - (u(i, j + 1, k) - u(i, j - 1, k))) * s;
    w.x(gi, gj, gk) = x;
    w.y(gi, gj, gk) = y;
    w.z(gi, gj, gk) = z;
    w.mag(gi, gj, gk) = std::sqrt(x * x + y * y + z * z);
  });
}

void plain_confinement(Center3& w, float scale) {
  const Vec3i n = w.x.dims();
  const Field<float>& m = w.mag;
  each_cell(n, 0, [&](int i, int j, int k) {
    Vec3f f;
    if (std::min({i, j, k}) >= 2 && i < n[0] - 2 && j < n[1] - 2 && k < n[2] - 2) {
      Vec3f N(m(i + 1, j, k) - m(i - 1, j, k), m(i, j + 1, k) - m(i, j - 1, k),
              m(i, j, k + 1) - m(i, j, k - 1));
      N = dot(N, N) > 1e-20f ? N * (1 / std::sqrt(dot(N, N))) : Vec3f();
      f = cross(N, Vec3f(w.x(i, j, k), w.y(i, j, k), w.z(i, j, k))) * scale;
    }
    w.x(i, j, k) = f[0];
    w.y(i, j, k) = f[1];
    w.z(i, j, k) = f[2];
  });
}

void plain_transfer(Mac& m, const Center3& f, float c) {
  each_cell(f.x.dims(), 2, [&](int i, int j, int k) {
    m.U(i, j, k) += (f.x(i, j, k) + f.x(i - 1, j, k)) * c;
    m.V(i, j, k) += (f.y(i, j, k) + f.y(i, j - 1, k)) * c;
    m.W(i, j, k) += (f.z(i, j, k) + f.z(i, j, k - 1)) * c;
  });
}

void plain_add_curl(Mac& m, const Field<float>& psi, const Field<float>* map, float scale) {
  const int nx = psi.nx(), ny = psi.ny(), nz = psi.nz();
  // The mean over the cells of an edge along `axis`.
  const auto mean = [&](int i, int j, int k, int axis) {
    const auto at = [&](int a, int b) {
      return axis == 0   ? (*map)(i, j - a, k - b)
             : axis == 1 ? (*map)(i - a, j, k - b)
                         : (*map)(i - a, j - b, k);
    };
    return map ? ((at(1, 1) + at(0, 1)) + (at(1, 0) + at(0, 0))) * 0.25f : 1;
  };
  const auto P1 = [&](int i, int j, int k) { return psi(nx - 1 - i, j, k) * mean(i, j, k, 0); };
  const auto P2 = [&](int i, int j, int k) { return psi(i, ny - 1 - j, k) * mean(i, j, k, 1); };
  const auto P3 = [&](int i, int j, int k) { return psi(i, j, nz - 1 - k) * mean(i, j, k, 2); };
  each_cell(psi.dims(), 1, [&](int i, int j, int k) {
    const float p1 = P1(i, j, k), p2 = P2(i, j, k), p3 = P3(i, j, k);
    m.U(i, j, k) += ((P3(i, j + 1, k) - p3) - (P2(i, j, k + 1) - p2)) * scale;
    m.V(i, j, k) += ((P1(i, j, k + 1) - p1) - (P3(i + 1, j, k) - p3)) * scale;
    m.W(i, j, k) += ((P2(i + 1, j, k) - p2) - (P1(i, j + 1, k) - p1)) * scale;
  });
}

TEST(Vorticity, EqualsThePlainForm) {
  for (const Vec3i& n : kSizes) {
    Mac u(n), expected_u(n);
    u.randomize(1);
    expected_u.copy(u);
    Center3 expected_w(n), expected_f(n);
    plain_curl(expected_w, u, 0.3f);
    plain_curl(expected_f, u, 0.3f);
    plain_confinement(expected_f, 0.7f);
    plain_transfer(expected_u, expected_f, 0.25f);
    everywhere([&] {
      Center3 w(n);
      VelocityCurl(w.x, w.y, w.z, w.mag, u.U, u.V, u.W, 0.3f);
      EXPECT_TRUE(w.same(expected_w)) << n[0];
      VorticityConfinementForce(w.x, w.y, w.z, w.mag, 0.7f);
      EXPECT_TRUE(w.same(expected_f)) << n[0];
      Mac moved(n);
      moved.copy(u);
      add_center_force_to_mac(moved.U, moved.V, moved.W, w.x, w.y, w.z, 0.25f);
      EXPECT_TRUE(moved.same(expected_u)) << n[0];
    });
  }
}

TEST(CurlNoise, EqualsThePlainForm) {
  for (const Vec3i& n : kSizes)
    for (bool scaled : {false, true}) {
      Field<float> psi(n[0], n[1], n[2]), map(n[0], n[1], n[2]);
      fill_random(psi, 1);
      fill_random(map, 2, 0, 2);
      Mac expected(n), start(n);
      start.randomize(3);
      expected.copy(start);
      plain_add_curl(expected, psi, scaled ? &map : nullptr, 0.7f);
      everywhere([&] {
        Mac m(n);
        m.copy(start);
        add_curl_of_scaled(m.U, m.V, m.W, psi, scaled ? &map : nullptr, 0.7f);
        for (int axis = 0; axis < 3; ++axis)
          each_cell(n, 1, [&](int i, int j, int k) {
            EXPECT_EQ(m.face(axis)(i, j, k), expected.face(axis)(i, j, k));
          });
        EXPECT_TRUE(std::min({n[0], n[1], n[2]}) >= 3 || m.same(start));
      });
    }
  Mac m({13, 10, 9});
  Field<float> psi(13, 10, 9), other(6, 7, 9);
  EXPECT_THROW(add_curl_of_scaled(m.U, m.V, m.W, psi, &other, 1), FieldDimensionMismatchException);
}

}  // namespace
}  // namespace nbx
