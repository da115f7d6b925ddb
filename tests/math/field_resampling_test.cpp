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
  for (int k = 1; k < W.nz() - 2; ++k)
    for (int j = 1; j < V.ny() - 2; ++j)
      for (int i = 1; i < U.nx() - 2; ++i)
        worst = std::max(worst, std::fabs(U(i + 1, j, k) - U(i, j, k) + V(i, j + 1, k) -
                                          V(i, j, k) + W(i, j, k + 1) - W(i, j, k)));
  return worst;
}

}  // namespace

TEST(FieldResampling, CentresFollowALinearFunction) {
  const auto f = [](float x, float y, float z) { return 2 * x - y + 0.5f * z; };
  Field<float> src(6, 5, 4);
  for (int k = 0; k < 4; ++k)
    for (int j = 0; j < 5; ++j)
      for (int i = 0; i < 6; ++i) src(i, j, k) = f(float(i), float(j), float(k));
  for (const int factor : {2, 3, 5}) {
    Field<float> dst(finer(6, factor), finer(5, factor), finer(4, factor));
    set(dst, -77);
    scale_up_center(dst, src, factor);
    // Fine cell i has its centre (i - 1/2) / factor cells above the start of coarse cell 1.
    const auto at = [=](int i) { return 0.5f + (float(i) - 0.5f) / float(factor); };
    float worst = 0;
    for (int k = 1; k < dst.nz() - 1; ++k)
      for (int j = 1; j < dst.ny() - 1; ++j)
        for (int i = 1; i < dst.nx() - 1; ++i)
          worst = std::max(worst, std::fabs(dst(i, j, k) - f(at(i), at(j), at(k))));
    EXPECT_LT(worst, 1e-5f) << factor;
    EXPECT_EQ(dst(0, 1, 1), -77);
    EXPECT_EQ(dst(1, 1, dst.nz() - 1), -77);
  }
}

TEST(FieldResampling, EqualDimensionsCopyAndCellsBeyondTheSourceAreZero) {
  Field<float> src(4, 3, 5), dst(4, 3, 5);
  test::fill_random(src, 1);
  scale_up_center(dst, src, 1);
  EXPECT_TRUE(test::same_bits(dst, src));
  set(dst, 0);
  scale_up_low(dst, src, 2);
  EXPECT_TRUE(test::same_bits(dst, src));

  dst.resize(20, finer(3, 2), finer(5, 2));
  set(src, 1);
  scale_up_center(dst, src, 2);
  EXPECT_EQ(dst(5, 1, 1), 1) << "at 2.75 of 0 .. 3";
  EXPECT_EQ(dst(6, 1, 1), 0) << "at 3.25";
  EXPECT_THROW(scale_up_west(dst, src, 2), FieldDimensionMismatchException);
}

TEST(FieldResampling, FacesAreInterpolatedAlongTheirNormalOnly) {
  Field<float> src(5, 4, 4), dst(finer(4, 2) + 1, finer(4, 2), finer(4, 2));
  set(src, 0);
  for (int k = 0; k < 4; ++k)
    for (int j = 0; j < 4; ++j) src(2, j, k) = 1;
  src(2, 2, 1) = 5;
  set(dst, -77);
  scale_up_west(dst, src, 2);
  EXPECT_EQ(dst(3, 1, 1), 1);
  EXPECT_EQ(dst(2, 1, 1), 0.5f);
  EXPECT_EQ(dst(4, 1, 1), 0.5f);
  EXPECT_EQ(dst(5, 1, 1), 0);
  EXPECT_EQ(dst(3, 2, 2), 1);
  EXPECT_EQ(dst(3, 3, 2), 5) << "the four fine faces of one coarse face";
  EXPECT_EQ(dst(3, 4, 1), 5);
  EXPECT_EQ(dst(6, 1, 1), -77) << "the ghost layer";
}

TEST(FieldResampling, DivergenceFreeStaysDivergenceFree) {
  const int nx = 6, ny = 5, nz = 7;
  // The curl of a random potential on the edges.
  Field<float> A(nx + 1, ny + 1, nz + 1), B(nx + 1, ny + 1, nz + 1), C(nx + 1, ny + 1, nz + 1);
  test::fill_random(A, 1);
  test::fill_random(B, 2);
  test::fill_random(C, 3);
  Field<float> U(nx + 1, ny, nz), V(nx, ny + 1, nz), W(nx, ny, nz + 1);
  for (int k = 0; k <= nz; ++k)
    for (int j = 0; j <= ny; ++j)
      for (int i = 0; i <= nx; ++i) {
        if (j < ny && k < nz)
          U(i, j, k) = C(i, j + 1, k) - C(i, j, k) - (B(i, j, k + 1) - B(i, j, k));
        if (i < nx && k < nz)
          V(i, j, k) = A(i, j, k + 1) - A(i, j, k) - (C(i + 1, j, k) - C(i, j, k));
        if (i < nx && j < ny)
          W(i, j, k) = B(i + 1, j, k) - B(i, j, k) - (A(i, j + 1, k) - A(i, j, k));
      }
  ASSERT_LT(largest_divergence(U, V, W), 1e-5f);
  for (const int factor : {2, 3}) {
    const int fx = finer(nx, factor), fy = finer(ny, factor), fz = finer(nz, factor);
    Field<float> u(fx + 1, fy, fz), v(fx, fy + 1, fz), w(fx, fy, fz + 1);
    scale_up_west(u, U, factor);
    scale_up_south(v, V, factor);
    scale_up_low(w, W, factor);
    EXPECT_LT(largest_divergence(u, v, w), 1e-5f) << factor;
  }
}

TEST(FieldResampling, GradientFieldsAreRampsUpToTheGhostLayer) {
  Field<float> f(6, 5, 10);
  const struct {
    int mode;
    float at_3_2_5;
  } cases[] = {{0, 0.5f}, {1, 1 / 3.f}, {2, 0.5f}, {3, 2 * 0.5f + 3 / 3.f - 4 * 0.5f}};
  for (const auto& c : cases) {
    set(f, -77);
    create_gradient_field(f, c.mode, {2, 3, -4});
    EXPECT_FLOAT_EQ(f(3, 2, 5), c.at_3_2_5) << c.mode;
    EXPECT_EQ(f(0, 2, 5), f(1, 2, 5));
    EXPECT_EQ(f(5, 4, 9), f(4, 3, 8));
    EXPECT_EQ(f(3, 0, 9), f(3, 1, 8));
  }
}

}  // namespace nbx
