#include "math/rational_spline.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "math/curves/spline_stream.h"
#include "math/spline_operators.h"
#include "support/support.h"
#include "util/exception.h"

namespace nbx {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

struct Point {
  float x, y;
  std::int32_t in = kSmoothTangent, out = kSmoothTangent;
  float bias = 0.5f;
};

RationalSpline make(const std::vector<Point>& points) {
  RationalSpline spline;
  for (const Point& p : points) spline.setBias(spline.addPoint(p.x, p.y, p.in, p.out), p.bias);
  return spline;
}

// A curve with all kinds of spans.
RationalSpline rich_curve() {
  return make({{0.1f, 0.3f, 1, 1, 0.2f},
               {0.3f, 0.9f, 1, 0, 0.5f},
               {0.5f, -0.2f, 0, 1, 0.9f},
               {0.8f, 0.6f, 1, 1, 0.5f},
               {0.9f, 0.1f}});
}

// The rational Bezier curve of the span that starts at knot i, by its definition, in double.
double bezier_value(const RationalSpline& s, std::size_t i, double v) {
  const RationalSpline::Knot &a = s.knots()[i], &b = s.knots()[i + 1];
  const double t = (v - a.x) / (double{b.x} - a.x), w0 = s.bias()[i], w1 = 1 - w0;
  const double f[4] = {a.y, a.y + a.outTangent / 3.0, b.y - b.inTangent / 3.0, b.y};
  const double B[4] = {(1 - t) * (1 - t) * (1 - t) * w0, 3 * t * (1 - t) * (1 - t) * w0,
                       3 * t * t * (1 - t) * w1, t * t * t * w1};
  return (B[0] * f[0] + B[1] * f[1] + B[2] * f[2] + B[3] * f[3]) / (B[0] + B[1] + B[2] + B[3]);
}

TEST(RationalSpline, ValuesWorkedByHand) {
  const std::vector<Point> unordered = {{3, 5}, {0, 0}, {1, 1}};  // tangents 5/3 and 10/3
  const struct {
    std::vector<Point> points;
    float v, expected;
  } cases[] = {{{}, 3, 0},
               {{{2, 7}}, 5, 7},
               {{{0, 0, 0, 0}, {1, 1, 0, 0}}, 0.3f, 0.3f},
               {{{0, 0, 9, 9}, {1, 1, 9, 9}}, 0.25f, 0.15625f},  // 3 t^2 - 2 t^3
               {unordered, 0.5f, 0.5f - 5.0f / 24},
               {unordered, 2, 3 + 5.0f / 12}};
  for (const auto& c : cases)
    EXPECT_NEAR(make(c.points).eval(c.v), c.expected, 2e-7f * (1 + std::abs(c.expected))) << c.v;
}

// Float against the definition in double: about ten roundings of terms below 2, over a denominator
// of at least 0.1.
TEST(RationalSpline, SpansAreRationalBezierCurves) {
  RationalSpline spline = rich_curve();
  spline.rebuild();
  const auto& knots = spline.knots();
  for (std::size_t i = 0; i + 1 < knots.size(); ++i)
    for (float t : {0.001f, 0.2f, 0.5f, 0.7f, 1.0f}) {
      const float v = std::min(knots[i].x + t * (knots[i + 1].x - knots[i].x), knots[i + 1].x);
      EXPECT_NEAR(spline.evaluate(v), bezier_value(spline, i, v), 2e-5) << i << ' ' << t;
    }
}

TEST(RationalSpline, KnotsRiseStrictly) {
  for (float x : {0.5f, 100.0f, -3e8f}) {
    RationalSpline spline = make({{x, 3}, {x, 1}, {-kNaN, 4}, {x, 2}});
    EXPECT_EQ(spline.eval(x), 1);
    const auto& knots = spline.knots();
    ASSERT_EQ(knots.size(), 4u);
    for (std::size_t i = 1; i < 4; ++i) {
      EXPECT_GT(knots[i].x, knots[i - 1].x);
      EXPECT_LE(knots[i].x, std::max(knots[i - 1].x + 2e-6f, std::nextafter(knots[i - 1].x, 1e9f)));
      EXPECT_EQ(knots[i].y, static_cast<float>(i + 1));
    }
    EXPECT_TRUE(std::isnan(spline.eval(kNaN)));
  }
}

// With a bias at or beyond the ends of its range the curve is finite and goes through its knots.
TEST(RationalSpline, ExtremeBias) {
  for (float bias : {0.0f, 1.0f, 1e-9f, 7.0f, -3.0f, kNaN}) {
    RationalSpline spline = make({{0, 2, 1, 1, bias}, {1, 3, 1, 1, bias}, {2, -1}});
    for (int i = 0; i <= 2000; ++i) {
      const float y = spline.eval(static_cast<float>(i) / 1000);
      EXPECT_TRUE(y > -1.1f && y < 3.1f) << bias << ' ' << i << ' ' << y;
    }
    EXPECT_NEAR(spline.eval(1), 3, 0.03f) << bias;
  }
}

TEST(RationalSpline, EditingAndComparing) {
  RationalSpline a = make({{1, 2}, {3, 4}, {0, 6}}), b = make({{10, 20}, {30, 40}});
  for (const int none : {-1, 3}) {  // no such points
    a.removePoint(none);
    a.setBias(none, 0.9f);
    a.setSideBias(none, 0.9f);
  }
  EXPECT_TRUE(a == make({{0, 6}, {1, 2}, {3, 4}}));
  b += a;
  EXPECT_TRUE(b == make({{11, 22, 1, 1, 1}, {33, 44, 1, 1, 1}, {0, 6}}));
  EXPECT_TRUE(make({{0, 0}, {1, 1}}) < a);                        // fewer knots
  EXPECT_FALSE(make({{0, 0}, {1, 1}}) < make({{1, 3}, {2, 5}}));  // equal biases

  a.rebuild();
  a.removePoint(0);  // (3, 4) and (0, 6) stay, with their old ids 2 and 0
  for (const int place : {2, 0}) a.setBiasFromSlider(place, -1);
  EXPECT_EQ(a.points()[0].bias, 0.5f) << "there is no place 2 among two";
  EXPECT_FLOAT_EQ(a.points()[1].bias, 0.5f * std::exp(-1.0f));
  a.setBiasFromSlider(0, 2);
  EXPECT_FLOAT_EQ(a.points()[1].bias, 1 - 0.5f * std::exp(-2.0f));
}

TEST(SplineOperators, EqualTheScalarFormula) {
  RationalSpline spline = rich_curve(), dirty = rich_curve();
  const auto lesser = [](float a, float b) { return std::isnan(a) || a < b ? a : b; };
  for (int n : {0, 1, 5, 1024, 1025, 5000}) {
    Field<float> src = test::random_field({n, 1, 1}, 1, 0, 1), dst[5], again(n, 1, 1);
    Field<float> driver = test::random_field({n, 1, 1}, 2, -0.2f, 1.2f);
    for (std::size_t i = 0; i < std::min<std::size_t>(src.count(), 5); ++i)
      driver[i] = rich_curve().points()[i].x;
    if (n > 20) driver[7] = src[9] = kNaN;
    for (Field<float>& d : dst) d.resize(n, 1, 1);
    const float a = 0.15f;
    apply_function(dst[0], driver, dirty);
    decay_linear(dst[1], src, driver, a, spline);
    emit_linear(dst[2], src, driver, a, spline);
    decay_exponential(dst[3], src, driver, a, spline);
    emit_exponential(dst[4], src, driver, a, spline);
    for (std::size_t i = 0; i < src.count(); ++i) {
      const float x = src[i], s = spline.eval(driver[i]), c = s < 0 ? 0 : s;
      const float taken = lesser(x, lesser(c, a)), left = x - lesser(c, a), part = lesser(x, c);
      const float expected[] = {s, left < 0 ? 0 : left, taken, x - a * part, a * part};
      for (int op = 0; op < 5; ++op)
        EXPECT_TRUE(dst[op][i] == expected[op] ||
                    (std::isnan(dst[op][i]) && std::isnan(expected[op])))
            << op << ' ' << i;
    }
    test::everywhere([&] {
      again.copy(src);
      decay_exponential(again, again, driver, a, spline);  // in place
      EXPECT_TRUE(test::same_bits(again, dst[3]));
      again.copy(driver);
      apply_function(again, again, spline);
      EXPECT_TRUE(test::same_bits(again, dst[0]));
    });
  }
  Field<float> a(3, 1, 1), b(4, 1, 1);
  EXPECT_THROW(apply_function(a, b, spline), FieldDimensionMismatchException);
}

std::vector<std::byte> bytes_of(const RationalSpline& spline, const SplineView& view) {
  ByteWriter out;
  EXPECT_TRUE(write_spline(out, spline, view));
  return out.bytes();
}

TEST(SplineStream, RoundTripAndOlderForm) {
  RationalSpline spline = rich_curve(), read = make({{4, 4}});
  spline.setSideBias(1, 0.75f);
  SplineView view{{1, 2, 3, 4}, false}, read_view;
  std::vector<std::byte> bytes = bytes_of(spline, view);
  EXPECT_EQ(bytes.size(), 4u + 4 + 5 * 32 + 1 + 32);
  ByteReader in(bytes);
  ASSERT_TRUE(read_spline(in, read, read_view));
  EXPECT_EQ(in.left(), 0u);
  EXPECT_TRUE(read == spline);
  EXPECT_EQ(read.points()[1].sideBias, 0.75f);
  EXPECT_EQ(read_view.rectangle, view.rectangle);
  // x = 0.1f in the first point, little-endian.
  const unsigned char start[] = {0x32, 0x30, 0x53, 0x52, 5, 0, 0, 0, 0xcd, 0xcc, 0xcc, 0x3d};
  EXPECT_EQ(std::memcmp(bytes.data(), start, sizeof start), 0);

  bytes[0] = std::byte{0x31};
  bytes.resize(8 + 5 * 32);
  SplineView kept{{5, 6, 7, 8}, true};
  ByteReader older(bytes);
  ASSERT_TRUE(read_spline(older, read, kept));
  EXPECT_FALSE(kept.valid);
  EXPECT_EQ(kept.rectangle[0], 5);
}

// A curve that is read without failure is written and read back the same. A failed read doesn't
// change its destination.
TEST(SplineStream, Damage) {
  const std::vector<std::byte> good = bytes_of(rich_curve(), {{1, 2, 3, 4}, true});
  int failed = 0, read = 0;
  const auto attempt = [&](const std::vector<std::byte>& bytes) {
    RationalSpline spline = make({{4, 4}}), again;
    SplineView view, view_again;
    ByteReader in(bytes);
    if (read_spline(in, spline, view)) {
      ++read;
      for (float v = 0; v < 1; v += 0.01f) spline.eval(v);
      const std::vector<std::byte> written = bytes_of(spline, view);
      ByteReader back(written);
      EXPECT_TRUE(read_spline(back, again, view_again));
      EXPECT_EQ(bytes_of(again, view_again), written);
      EXPECT_TRUE(again == spline);
    } else {
      ++failed;
      EXPECT_TRUE(spline == make({{4, 4}}));
      EXPECT_FALSE(view.valid);
    }
  };
  for (std::size_t size = 0; size < good.size(); ++size)
    attempt({good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)});
  attempt(bytes_of(make({{0, 1}, {kNaN, 2}}), {}));
  attempt(bytes_of(make({{0, 1}, {1, std::numeric_limits<float>::infinity()}}), {}));
  EXPECT_EQ(failed, static_cast<int>(good.size()) + 2);
  for (std::size_t i = 0; i < good.size(); ++i)
    for (unsigned flip : {1u, 0x80u, 0xffu}) {
      std::vector<std::byte> bytes = good;
      bytes[i] ^= std::byte(flip);
      attempt(bytes);
    }
  EXPECT_GT(read, 100);
}

}  // namespace
}  // namespace nbx
