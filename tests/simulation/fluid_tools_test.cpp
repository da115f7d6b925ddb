#include <limits>

#include "simulation/fluid_tools3d.h"
#include "simulation/mac.h"
#include "util/exception.h"

namespace nbx {
namespace {

using test::each_cell;
using test::everywhere;
using test::fill_random;
using test::same_bits;

// Faces and centres of a small grid that is odd on one axis and longer than a vector on another.
struct Grid : test::Mac {
  static constexpr int nx = 37, ny = 6, nz = 9;
  Field<float> centre{nx, ny, nz}, phi{nx, ny, nz};

  Grid() : Mac({nx, ny, nz}) {
    randomize(1);
    fill_random(centre, 4);
    fill_random(phi, 5);
    phi(5, 2, 3) = 0;  // a cell on the surface is solid
  }
};

TEST(FluidTools, NegDivergence) {
  Grid g;
  const double inv_dx = 3.7;
  for (const bool solid : {false, true}) {
    Field<float> expected(g.nx, g.ny, g.nz);
    set(expected, 0);
    each_cell(expected.dims(), 1, [&](int i, int j, int k) {
      const double du = double(g.U(i, j, k)) - double(g.U(i + 1, j, k));
      const double dv = double(g.V(i, j, k)) - double(g.V(i, j + 1, k));
      const double dw = double(g.W(i, j, k)) - double(g.W(i, j, k + 1));
      if (!solid || g.phi(i, j, k) > 0)
        expected(i, j, k) = static_cast<float>((du + dv + dw) * inv_dx);
    });
    everywhere([&] {
      set(g.centre, 9);
      NegDivergence(g.centre, g.U, g.V, g.W, solid ? &g.phi : nullptr, inv_dx);
      for (std::size_t c = 0; c < expected.count(); ++c)
        ASSERT_NEAR(g.centre[c], expected[c], 1e-6f) << c;
    });
  }
  EXPECT_THROW(NegDivergence(g.U, g.U, g.V, g.W, nullptr, 1), FieldDimensionMismatchException);
}

TEST(FluidTools, SubtractPressureGradient) {
  const double dx = 0.3;
  for (const bool solid : {false, true}) {
    Grid plain;
    const Field<float>&p = plain.centre, &phi = plain.phi;
    for (int axis = 0; axis < 3; ++axis)
      each_cell({plain.nx + 1, plain.ny + 1, plain.nz + 1}, 1, [&](int i, int j, int k) {
        const int bi = i - (axis == 0), bj = j - (axis == 1), bk = k - (axis == 2);
        if (solid && !(phi(i, j, k) > 0 && phi(bi, bj, bk) > 0)) return;
        float& u = plain.face(axis)(i, j, k);
        u = static_cast<float>(double(u) - (double(p(i, j, k)) - double(p(bi, bj, bk))) * dx);
      });
    everywhere([&] {
      Grid g;
      subtract_pressure_gradient(g.U, g.V, g.W, g.centre, dx, solid ? &g.phi : nullptr);
      EXPECT_TRUE(g.same(plain));
      EXPECT_THROW(subtract_pressure_gradient(g.U, g.U, g.W, g.centre, dx, nullptr),
                   FieldDimensionMismatchException);
    });
  }
}

// What isn't above 0 counts as 0, what is above 1 as 1.
TEST(FluidTools, AddCenterToMac) {
  Grid plain;
  const float odd[] = {7, -4, 0.25f, std::numeric_limits<float>::quiet_NaN()};
  for (std::size_t i = 0; i < plain.centre.count(); ++i) plain.centre[i] = odd[i * i % 7 % 4];
  const auto held = [&](int i, int j, int k) {
    const float v = plain.centre(i, j, k);
    return v > 0 ? std::min(v, 1.0f) : 0.0f;
  };
  Grid expected;
  each_cell({plain.nx + 1, plain.ny + 1, plain.nz + 1}, 1, [&](int i, int j, int k) {
    expected.U(i, j, k) += 0.5f * (held(i, j, k) + held(i - 1, j, k));
    expected.W(i, j, k) -= 2 * (held(i, j, k) + held(i, j, k - 1));
  });
  everywhere([&] {
    Grid g;
    add_center_to_mac(g.U, g.V, g.W, plain.centre, 0.5f, 0, -2);
    EXPECT_TRUE(g.same(expected));
  });
}

SimSettings boxed(const std::array<int, 6>& closed) {
  SimSettings settings;
  settings.domain_box = settings.active_box = {{0, 0, 0}, {20, 20, 20}};
  settings.face_closed = closed;
  return settings;
}

void velocity_boundary(int axis, Field<float>& f, const SimSettings& settings) {
  (axis == 0 ? VelocityBoundaryU : axis == 1 ? VelocityBoundaryV : VelocityBoundaryW)(f, settings);
}

TEST(FluidTools, VelocityBoundaryHoldsWallsAndLetsFlowOnlyOut) {
  for (int axis = 0; axis < 3; ++axis)
    for (const bool wall : {false, true}) {
      std::array<int, 6> closed{};
      closed[static_cast<std::size_t>(2 * axis + 1)] = wall;
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
  SimSettings settings = boxed({1, 1, 1, 1, 1, 0});
  settings.active_box = {{1, 0, 0}, {19, 21, 20}};
  EXPECT_EQ(closed_faces(settings), (std::array<int, 6>{0, 0, 1, 1, 1, 0}));
  settings.active_box = settings.domain_box;
  settings.wind_direction = {0.5, -0.25, 0.75};
  settings.wind_speed = 4;
  for (int axis = 0; axis < 3; ++axis) {
    Grid g, expected;
    velocity_boundary(axis, g.face(axis), settings);
    set_border(expected.face(axis), static_cast<float>(4 * settings.wind_direction[axis]));
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
// point of the surface lies between the cells 5 and 6, and only 6 is fluid. What is deeper than the
// root of 12 has no such point.
TEST(FluidTools, ChannelInsideSolid) {
  for (int axis = 0; axis < 3; ++axis)
    for (const float surface : {5.46f, 5.47f})
      for (const bool extrapolate : {false, true}) {
        Vec3i n(5, 5, 5);
        n[axis] = 10;
        Field<float> phi(n[0], n[1], n[2]), channel(n[0], n[1], n[2]);
        each_cell(n, 0, [&](int i, int j, int k) {
          channel(i, j, k) = static_cast<float>(Vec3i(i, j, k)[axis]);
          const float distance = channel(i, j, k) - surface;
          phi(i, j, k) = distance * std::abs(distance);
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

}  // namespace
}  // namespace nbx
