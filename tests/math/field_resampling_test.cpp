#include "math/field_resampling.h"

#include "math/field_operators.h"
#include "support/support.h"
#include "util/exception.h"

namespace nbx {

namespace {

// Cells of an axis of the finer grid, ghost layers included.
int finer(int n, int factor) { return (n - 2) * factor + 2; }

// The largest |u_x + v_y + w_z| of the interior cells, for cells of edge 1.
float largest_divergence(const Field<float>& U, const Field<float>& V, const Field<float>& W) {
  float worst = 0;
  test::each_cell({V.nx(), U.ny(), U.nz()}, 1, [&](int i, int j, int k) {
    worst = std::max(worst, std::fabs(U(i + 1, j, k) - U(i, j, k) + V(i, j + 1, k) - V(i, j, k) +
                                      W(i, j, k + 1) - W(i, j, k)));
  });
  return worst;
}

}  // namespace

TEST(FieldResampling, CentresFollowALinearFunction) {
  const auto f = [](float x, float y, float z) { return 2 * x - y + 0.5f * z; };
  Field<float> src(6, 5, 4);
  test::each_cell(src.dims(), 0,
                  [&](int i, int j, int k) { src(i, j, k) = f(float(i), float(j), float(k)); });
  for (const int factor : {2, 3, 5}) {
    Field<float> dst(finer(6, factor), finer(5, factor), finer(4, factor));
    set(dst, -77);
    scale_up_center(dst, src, factor);
    // Fine cell i has its centre (i - 1/2) / factor cells above the start of coarse cell 1.
    const auto at = [=](int i) { return 0.5f + (float(i) - 0.5f) / float(factor); };
    float worst = 0;
    test::each_cell(dst.dims(), 1, [&](int i, int j, int k) {
      worst = std::max(worst, std::fabs(dst(i, j, k) - f(at(i), at(j), at(k))));
    });
    EXPECT_LT(worst, 1e-5f) << factor;
    EXPECT_EQ(dst(0, 1, 1), -77);
    EXPECT_EQ(dst(1, 1, dst.nz() - 1), -77);
  }
}

TEST(FieldResampling, DivergenceFreeStaysDivergenceFree) {
  const int nx = 6, ny = 5, nz = 7;
  // The curl of a random potential on the edges.
  Field<float> A(nx + 1, ny + 1, nz + 1), B(nx + 1, ny + 1, nz + 1), C(nx + 1, ny + 1, nz + 1);
  test::fill_random(A, 1);
  test::fill_random(B, 2);
  test::fill_random(C, 3);
  Field<float> U(nx + 1, ny, nz), V(nx, ny + 1, nz), W(nx, ny, nz + 1);
  test::each_cell(U.dims(), 0, [&](int i, int j, int k) {
    U(i, j, k) = C(i, j + 1, k) - C(i, j, k) - (B(i, j, k + 1) - B(i, j, k));
  });
  test::each_cell(V.dims(), 0, [&](int i, int j, int k) {
    V(i, j, k) = A(i, j, k + 1) - A(i, j, k) - (C(i + 1, j, k) - C(i, j, k));
  });
  test::each_cell(W.dims(), 0, [&](int i, int j, int k) {
    W(i, j, k) = B(i + 1, j, k) - B(i, j, k) - (A(i, j + 1, k) - A(i, j, k));
  });
  ASSERT_LT(largest_divergence(U, V, W), 1e-5f);
  for (const int factor : {2, 3}) {
    const int fx = finer(nx, factor), fy = finer(ny, factor), fz = finer(nz, factor);
    Field<float> u(fx + 1, fy, fz), v(fx, fy + 1, fz), w(fx, fy, fz + 1);
    scale_up_west(u, U, factor);
    scale_up_south(v, V, factor);
    scale_up_low(w, W, factor);
    EXPECT_LT(largest_divergence(u, v, w), 1e-5f) << factor;
    // The fine faces of a coarse face have its value; so all others are what divergence leaves.
    test::each_cell({fx + 1, fy, fz}, 1, [&](int i, int j, int k) {
      if ((i - 1) % factor != 0) return;
      const auto at = [=](int fine) { return (fine - 1) / factor + 1; };
      EXPECT_EQ(u(i, j, k), U(at(i), at(j), at(k)));
    });
    EXPECT_THROW(scale_up_west(u, U, 1), FieldDimensionMismatchException);
  }
}

}  // namespace nbx
