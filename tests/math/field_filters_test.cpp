#include "math/field_filters.h"

#include "math/field_operators.h"
#include "support/support.h"
#include "util/exception.h"

namespace nbx {

namespace {

// Weights at the distances n, n - 1 and nearer, worked by hand.
struct Box {
  double radius;
  int n;
  float w0, w1, w2;
};
constexpr Box boxes[] = {
    {0.5, 1, 0, 0.75f, 0.125f},
    {1, 1, 0, 0.5f, 0.25f},
    {2, 2, 0.5f, 0.25f, 0},
    {2.5, 3, 0.2f, 0.175f, 0.025f},
    {7.25, 8, 1 / 14.5f, 0.71875f / 14.5f, 0.03125f / 14.5f},
    {16, 16, 1 / 30.f, 1 / 60.f, 0},
};

// The window around p of a line of n values, cut at its ends, weights laid from both of its ends.
template <class Line>
double box_at(const Line& line, int n, int p, const Box& b) {
  const int lo = std::max(p - b.n, 0), hi = std::min(p + b.n, n - 1);
  double value = 0;
  for (int q = lo; q <= hi; ++q) {
    const float w = q == lo || q == hi ? b.w2 : q == lo + 1 || q == hi - 1 ? b.w1 : b.w0;
    value += static_cast<double>(w) * static_cast<double>(line(q));
  }
  return value;
}

// Replaces every line along `axis` by line_value(line, length, position).
template <class LineValue>
void filter_axis(Field<float>& f, int axis, LineValue line_value) {
  Field<float> before;
  before.copy(f);
  test::each_cell(f.dims(), 0, [&](int i, int j, int k) {
    Vec3i at(i, j, k);
    const int p = at[axis];
    const auto line = [&](int q) {
      at[axis] = q;
      return before(at[0], at[1], at[2]);
    };
    f(i, j, k) = static_cast<float>(line_value(line, f.dims()[axis], p));
  });
}

constexpr int sizes[][3] = {{1, 1, 1},   {2, 3, 1},   {3, 2, 4},  {5, 4, 6},
                            {16, 7, 33}, {17, 40, 5}, {70, 3, 36}};

}  // namespace

// Each pass rounds its weights and products once, and adds each value at most 2 log2(n) + 4 times:
// with values up to 1 and weights that add up to 1 the error of a pass stays below
// (2 log2(n) + 6) 2^-24.
TEST(FieldFilters, BoxBlurMatchesThePlainForm) {
  const test::ThreadCount threads(3);
  for (const auto& [nx, ny, nz] : sizes)
    for (const Box& box : boxes) {
      Field<float> field(nx, ny, nz), tmp(nx, ny, nz), expected;
      test::fill_random(field, 3);
      expected.copy(field);
      for (int axis = 0; axis < 3; ++axis)
        filter_axis(expected, axis,
                    [&](const auto& line, int n, int p) { return box_at(line, n, p, box); });
      box_blur3D(field, tmp, box.radius);
      const double bound = 3 * (2 * std::log2(box.n) + 6) * 0x1p-24;
      double worst = 0;
      for (std::size_t i = 0; i < field.count(); ++i)
        worst = std::max(worst, std::fabs(static_cast<double>(field[i]) - expected[i]));
      EXPECT_LE(worst, bound) << nx << "x" << ny << "x" << nz << " radius " << box.radius;
    }
}

TEST(FieldFilters, ConvolutionIsThePlainSum) {
  const test::ThreadCount threads(3);
  for (const auto& [nx, ny, nz] : sizes)
    for (const int width : {2, 5, 9}) {
      Field<float> field(nx, ny, nz), tmp(nx, ny, nz), filter(width, 1, 1), expected;
      test::fill_random(field, 3);
      test::fill_random(filter, 4);
      expected.copy(field);
      for (int axis = 0; axis < 3; ++axis)
        filter_axis(expected, axis, [&](const auto& line, int n, int p) {
          float value = 0;  // in the order of the positions, as the operator adds
          for (int q = std::max(p - width + 1, 0); q < std::min(p + width, n); ++q)
            value += line(q) * filter[static_cast<std::size_t>(std::abs(p - q))];
          return value;
        });
      convolve3D(filter, field, tmp);
      EXPECT_TRUE(test::same_bits(field, expected)) << nx << "x" << ny << "x" << nz << " " << width;
    }
}

TEST(FieldFilters, RefuseBadArguments) {
  const test::LogCapture log;
  Field<float> field(4, 4, 4), tmp(4, 4, 4), other(4, 2, 8), before, filter(1, 1, 1);
  test::fill_random(field, 1);
  before.copy(field);
  filter[0] = 2;
  for (const double radius : {0.0, -1.0, std::nan("")}) box_blur3D(field, tmp, radius);
  convolve3D(filter, field, tmp);
  EXPECT_EQ(log.count("box_blur3D: radius <= 0."), 3);
  EXPECT_EQ(log.count("convole3d: filter width < 2"), 1);
  EXPECT_TRUE(test::same_bits(field, before));
  EXPECT_THROW(box_blur3D(field, other, 1), FieldDimensionMismatchException);
}

}  // namespace nbx
