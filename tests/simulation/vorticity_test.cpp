#include "simulation/vorticity.h"

#include <algorithm>
#include <cmath>

#include "simulation/curl_noise.h"
#include "simulation/mac.h"
#include "util/exception.h"

namespace nbx {
namespace {

using test::each_cell;
using test::fill_random;
using test::Mac;
using test::same_bits;

const Vec3i kSizes[] = {{1, 1, 1}, {2, 5, 5}, {3, 3, 3},   {4, 6, 5},
                        {5, 5, 5}, {9, 7, 8}, {34, 19, 6}, {67, 5, 11}};

struct Centre3 {
  explicit Centre3(const Vec3i& n)
      : x(n[0], n[1], n[2]), y(n[0], n[1], n[2]), z(n[0], n[1], n[2]), mag(n[0], n[1], n[2]) {}
  bool same(const Centre3& b) const {
    return same_bits(x, b.x) && same_bits(y, b.y) && same_bits(z, b.z) && same_bits(mag, b.mag);
  }
  Field<float> x, y, z, mag;
};

// The plain forms, cell by cell. Ghost cells take the nearest interior cell.
void plain_curl(Centre3& w, const Mac& m, float dx) {
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

void plain_confinement(Centre3& w, float scale) {
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

void plain_transfer(Mac& m, const Centre3& f, float c) {
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
    Centre3 expected_w(n), expected_f(n);
    plain_curl(expected_w, u, 0.3f);
    plain_curl(expected_f, u, 0.3f);
    plain_confinement(expected_f, 0.7f);
    plain_transfer(expected_u, expected_f, 0.25f);
    test::everywhere([&] {
      Centre3 w(n);
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
      test::everywhere([&] {
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
