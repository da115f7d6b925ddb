// Operators on whole fields, and sampling between cells.
#include "math/field_operators.h"

#include <cstring>
#include <functional>
#include <limits>
#include <random>

#include "math/field_filters.h"
#include "math/field_reductions.h"
#include "math/field_resampling.h"
#include "math/interpolation.h"
#include "math/mfield_operations.h"
#include "math/spline_operators.h"
#include "support/gpu_thread.h"
#include "support/support.h"
#include "util/exception.h"

namespace nbx {

namespace {

constexpr float kA = 0.75f, kB = -1.5f;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

using F = Field<float>;
struct Case {
  const char* name;
  std::function<void(MField&, MField&, MField&)> run;
  std::function<float(float, float)> expected;
};

const Case cases[] = {
    {"set", [](MField& d, MField&, MField&) { m_set(d, kA); }, [](float, float) { return kA; }},
    {"max_a_x", [](MField& d, MField& x, MField&) { m_max_a_x(d, kA, x); },
     [](float x, float) { return x < kA ? kA : x; }},
    {"min_a_x", [](MField& d, MField& x, MField&) { m_min_a_x(d, kA, x); },
     [](float x, float) { return x > kA ? kA : x; }},
    {"scal", [](MField& d, MField& x, MField&) { m_scal(d, kA, x); },
     [](float x, float) { return kA * x; }},
    {"add", [](MField& d, MField& x, MField&) { m_add(d, x, kA); },
     [](float x, float) { return x + kA; }},
    {"add_max0", [](MField& d, MField& x, MField&) { m_add_max0(d, x, kA); },
     [](float x, float) { return x + kA > 0 ? x + kA : 0; }},
    {"max_ax_y", [](MField& d, MField& x, MField& y) { m_max_ax_y(d, kA, x, y); },
     [](float x, float y) { return kA * x > y ? kA * x : y; }},
    {"axpy", [](MField& d, MField& x, MField& y) { m_axpy(d, kA, x, y); },
     [](float x, float y) { return kA * x + y; }},
    {"axpby",
     [](MField& d, MField& x, MField& y) {
       on_cpu([](auto& f, auto& fx, auto& fy) { axpby(f, kA, fx, kB, fy); }, d, x, y);
     },
     [](float x, float y) { return kA * x + kB * y; }},
    {"clamp", [](MField& d, MField& x, MField&) { d.assign(x), m_clamp(d, kB, kA); },
     [](float x, float) { return std::min(std::max(x, kB), kA); }},
};

// Weights at the distances n, n - 1 and nearer, computed by hand.
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

// The filtered value at p of a line of n values. The window is cut at the ends of the line and has
// its weights from both of its ends.
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
  const Field<float> before = test::copy_of(f);
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

TEST(FieldOperators, ActOnEveryElement) {
  const test::ThreadCount threads(3);
  // Sizes below, at and above those at which vectors, blocks and threads start.
  for (const int n : {0, 1, 3, 4, 7, 16383, 16385, 65535, 65536, 100003}) {
    MField x(kCpu, {n, 1, 1}), y(kCpu, {1, n, 1}), out(kCpu, {1, 1, n});
    F &fx = x.overwrite_cpu(), &fy = y.overwrite_cpu(), &dst = out.overwrite_cpu();
    test::fill_random(fx, 1, -3, 3);
    test::fill_random(fy, 2, -3, 3);
    for (const Case& c : cases) {
      std::fill_n(dst.data(), dst.count(), 77.0f);
      c.run(out, x, y);
      int wrong = 0;
      for (std::size_t i = 0; i < fx.count(); ++i) wrong += dst[i] != c.expected(fx[i], fy[i]);
      EXPECT_EQ(wrong, 0) << c.name << " of " << n;
    }
    axpy(dst, kA, fx, fy);
    axpy(fy, kA, fx, fy);
    EXPECT_TRUE(std::equal(fy.data(), fy.data() + n, dst.data())) << "in place";
  }
}

// In place with the operand on the device; and from sources on the CPU to a destination on the
// device, which moves nothing.
TEST(FieldOperators, WorkWhereverFieldsLie) {
  test::on_gpu_thread([] {
    const test::LogCapture log;
    for (const Case& c : cases) {
      MField x, y, out(kGpu, {5, 3, 2});
      x.assign(test::random_field(out.dims(), 1, -3, 3));
      y.assign(test::random_field(out.dims(), 2, -3, 3));
      const F fx = test::copy_of(x.read_cpu());
      std::uint64_t moves = MField::moves();
      c.run(out, x, y);
      // `clamp` has no source: its case copies x to the device, and clamp moves it back.
      EXPECT_EQ(MField::moves() - moves, c.name == std::string("clamp") ? 2u : 0u) << c.name;
      x.move_to(kGpu);
      moves = MField::moves();
      c.run(x, x, y);
      EXPECT_EQ(MField::moves() - moves, c.name == std::string("set") ? 0u : 1u) << c.name;
      const F &got = out.read_cpu(), &in_place = x.read_cpu();
      for (std::size_t i = 0; i < fx.count(); ++i) {
        EXPECT_EQ(got[i], c.expected(fx[i], y.read_cpu()[i])) << c.name;
        EXPECT_EQ(in_place[i], got[i]) << c.name;
      }
    }
  });
}

TEST(FieldOperators, CheckAlignmentThenCount) {
  alignas(16) float memory[20] = {};
  F dst(4, 4, 1), x(2, 8, 1), small(3, 5, 1);
  F shifted = F::view(memory + 1, 3, 5, 1);
  EXPECT_NO_THROW(scal(dst, 2, x)) << "shapes may differ";
  EXPECT_THROW(scal(dst, 2, small), FieldDimensionMismatchException);
  EXPECT_THROW(axpy(dst, 2, x, small), FieldDimensionMismatchException);
  EXPECT_THROW(scal(dst, 2, shifted), MisalignedFieldMemoryException);
}

// An extreme value must be found anywhere: in lanes, the rest or the border of a block, the last
// block.
TEST(FieldReductions, FindTheExtremeAnywhere) {
  const int n = 3 * 16384 + 21;
  Field<float> x = test::random_field({n, 1, 1}, 1);
  for (const int at : {0, 1, 15, 16, 16383, 16384, 16400, 49151, 49152, n - 5, n - 1}) {
    float& v = x[at];
    const float before = v;
    v = -3;
    EXPECT_EQ(min(x), -3.0f) << at;
    EXPECT_EQ(infnorm(x), 3.0f) << at;
    v = 4;
    EXPECT_EQ(max(x), 4.0f) << at;
    v = -kInf;
    EXPECT_EQ(infnorm(x), kInf) << at;
    for (const float nan : {kNaN, -kNaN}) {
      v = nan;
      EXPECT_TRUE(std::isnan(infnorm(x))) << at;
    }
    v = before;
  }
}

// The sum in the order of the contract: 16 lanes in blocks of 16384, then the blocks.
TEST(FieldReductions, SumIsExactWhereDoublesAreAndTheSameForAnyThreads) {
  for (const int n : {5, 16, 16383, 16384, 16385, 70001}) {
    Field<float> x(n, 1, 1);
    double expected = 0;
    for (int i = 0; i < n; ++i) {
      // Multiples of 2^-20 below 2^7: every partial sum is exact in double, none in float.
      x[i] = static_cast<float>(i % 127) + 0x1p-16f * (i % 5);
      expected += static_cast<double>(x[i]);
    }
    EXPECT_EQ(sum(x), expected) << n;
    test::fill_random(x, 7);
    const test::ThreadCount one(1);
    const double alone = sum(x);
    for (const int threads : {2, 3, 5}) {
      const test::ThreadCount many(threads);
      EXPECT_EQ(sum(x), alone) << n << " on " << threads;
    }
  }
}

TEST(FieldReductions, BoxHoldsWhatExceedsTheThreshold) {
  const test::ThreadCount threads(3);
  Field<float> x(9, 5, 7);
  set(x, 0.5f);
  EXPECT_TRUE(min_bbox(x, 0.5f).empty()) << "the threshold itself doesn't count";
  x(3, 4, 2) = -0.6f;
  EXPECT_EQ(min_bbox(x, 0.5f), (IntBox{{3, 4, 2}, {3, 4, 2}}));
  x(8, 1, 6) = 2;
  x(5, 0, 5) = kNaN;
  EXPECT_EQ(min_bbox(x, 0.5f), (IntBox{{3, 1, 2}, {8, 4, 6}}));
}

TEST(FieldReductions, BoxIsThatOfAPlainSearch) {
  Field<float> x(61, 40, 33);
  std::mt19937 engine(3);
  const auto below = [&](int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); };
  test::everywhere([&] {
    for (const int points : {0, 1, 2, 3, 9}) {
      set(x, 0);
      IntBox expected;
      for (int i = 0; i < points; ++i) {
        const Vec3i at(below(x.nx()), below(x.ny()), below(x.nz()));
        x(at[0], at[1], at[2]) = i % 2 ? 1.0f : -1.0f;
        expected = box_union(expected, {at, at});
      }
      EXPECT_EQ(min_bbox(x, 0.5f), expected) << points;
    }
  });
}

// Zeros stay zeros in all of these, so leaving them out must not change a bit.
TEST(Occupancy, LeavesOutOnlyZeros) {
  const test::ThreadCount threads(3);
  for (const Vec3i dims : {Vec3i(23, 7, 6), Vec3i(70, 41, 33)}) {
    Field<float> x, y, expected, got;
    for (F* f : {&x, &y, &expected, &got}) f->resize(dims);
    set(x, 0);
    test::fill_random(y, 5, 0, 1);
    x(3, 2, 1) = 0.7f;
    x(dims[0] - 1, dims[1] - 1, dims[2] - 1) = kA;  // in a part that may be shorter
    const auto middle = x.data() + x.index(dims[0] / 2, dims[1] / 2, dims[2] / 2);
    std::fill_n(middle, 100, 0.3f);
    RationalSpline spline;
    spline.addPoint(0, 0);
    spline.addPoint(1, 0.5f);
    Occupancy held;
    EXPECT_FALSE(held.none()) << "unknown";
    const auto check = [&](const char* name, auto run, bool in_place) {
      for (const bool measured : {false, true}) {
        held.forget();
        if (measured) held.measure(x);
        expected.copy(x);
        in_place ? got.copy(x) : set(got, 77);
        run(expected, in_place ? expected : x, nullptr);
        run(got, in_place ? got : x, &held);
        EXPECT_TRUE(std::equal(got.data(), got.data() + got.count(), expected.data())) << name;
      }
      // What it believes to be 0 isn't touched.
      if (!in_place) return;
      got[70] = kB;
      run(got, got, &held);
      EXPECT_EQ(got[70], kB) << name;
    };
    using O = const Occupancy*;
    using G = const F;
    check(
        "scal", [](F& d, G& s, O o) { scal(d, kA, s, o); }, true);
    check(
        "add_max0", [](F& d, G& s, O o) { add_max0(d, s, kB, o); }, true);
    check(
        "min_a_x", [](F& d, G& s, O o) { min_a_x(d, kA, s, o); }, false);
    check(
        "axpy", [&](F& d, G& s, O o) { axpy(d, kA, s, s, o); }, false);
    check(
        "decay", [&](F& d, G& s, O o) { decay_linear(d, s, y, 0.1f, spline, o); }, true);
    check(
        "emit", [&](F& d, G& s, O o) { emit_exponential(d, s, y, 0.1f, spline, o); }, false);
  }
}

TEST(Occupancy, MeasuresWhatIsPositiveInside) {
  test::everywhere([] {
    for (const auto& [size, lowest] : {std::pair{Vec3i(2, 9, 9), -3.0f},
                                       {Vec3i(5, 4, 3), -3.0f},
                                       {Vec3i(70, 41, 33), -3.0f},
                                       {Vec3i(70, 41, 33), 0.0f}}) {
      const Vec3i dims = size;
      MField x(kCpu, dims);
      Field<float>& f = x.overwrite_cpu();
      test::fill_random(f, 4, lowest, 1);
      f[f.count() / 2] = kNaN;
      f[f.count() / 2 + 1] = -0.0f;
      F expected = test::copy_of(f);
      max_a_x(expected, 0, expected);
      test::each_cell(dims, 0, [&](int i, int j, int k) {
        for (const auto& [at, n] : {std::pair{i, dims[0]}, {j, dims[1]}, {k, dims[2]}})
          if (at == 0 || at == n - 1) expected(i, j, k) = 0;
      });
      Occupancy held, again;
      m_measure_positive(held, x);
      EXPECT_EQ(std::memcmp(f.data(), expected.data(), f.count() * sizeof(float)), 0);
      m_measure(again, x);
      EXPECT_EQ(held.none(), infnorm(f) == 0);
      EXPECT_EQ(held, again);
    }
  });
}

// Each pass rounds its weights and products once, and adds each value at most 2 log2(n) + 4 times.
// With values up to 1 and weights that add up to 1, the error of a pass stays below
// (2 log2(n) + 6) 2^-24.
TEST(FieldFilters, BoxBlurMatchesThePlainForm) {
  const test::ThreadCount threads(3);
  for (const auto& [nx, ny, nz] : sizes)
    for (const Box& box : boxes) {
      Field<float> field = test::random_field({nx, ny, nz}, 3), tmp(nx, ny, nz);
      Field<float> expected = test::copy_of(field);
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
      const Field<float> filter = test::random_field({width, 1, 1}, 4);
      Field<float> field = test::random_field({nx, ny, nz}, 3), tmp(nx, ny, nz);
      Field<float> expected = test::copy_of(field);
      for (int axis = 0; axis < 3; ++axis)
        filter_axis(expected, axis, [&](const auto& line, int n, int p) {
          float value = 0;  // in the order of the positions, as the operator adds
          for (int q = std::max(p - width + 1, 0); q < std::min(p + width, n); ++q)
            value += line(q) * filter[std::abs(p - q)];
          return value;
        });
      convolve3D(filter, field, tmp);
      EXPECT_TRUE(test::same_bits(field, expected)) << nx << "x" << ny << "x" << nz << " " << width;
    }
}

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

TEST(FieldResampling, CentersFollowALinearFunction) {
  const auto f = [](float x, float y, float z) { return 2 * x - y + 0.5f * z; };
  const Field<float> src = test::field_of(
      {6, 5, 4}, [&](int i, int j, int k) { return f(float(i), float(j), float(k)); });
  for (const int factor : {2, 3, 5}) {
    Field<float> dst(finer(6, factor), finer(5, factor), finer(4, factor));
    set(dst, -77);
    scale_up_center(dst, src, factor);
    // Fine cell i has its center (i - 1/2) / factor cells above the start of coarse cell 1.
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
  const Vec3i edges(nx + 1, ny + 1, nz + 1);
  const Field<float> A = test::random_field(edges, 1), B = test::random_field(edges, 2);
  const Field<float> C = test::random_field(edges, 3);
  const Field<float> U = test::field_of({nx + 1, ny, nz}, [&](int i, int j, int k) {
    return C(i, j + 1, k) - C(i, j, k) - (B(i, j, k + 1) - B(i, j, k));
  });
  const Field<float> V = test::field_of({nx, ny + 1, nz}, [&](int i, int j, int k) {
    return A(i, j, k + 1) - A(i, j, k) - (C(i + 1, j, k) - C(i, j, k));
  });
  const Field<float> W = test::field_of({nx, ny, nz + 1}, [&](int i, int j, int k) {
    return B(i + 1, j, k) - B(i, j, k) - (A(i, j + 1, k) - A(i, j, k));
  });
  ASSERT_LT(largest_divergence(U, V, W), 1e-5f);
  for (const int factor : {2, 3}) {
    const int fx = finer(nx, factor), fy = finer(ny, factor), fz = finer(nz, factor);
    Field<float> u(fx + 1, fy, fz), v(fx, fy + 1, fz), w(fx, fy, fz + 1);
    scale_up_west(u, U, factor);
    scale_up_south(v, V, factor);
    scale_up_low(w, W, factor);
    EXPECT_LT(largest_divergence(u, v, w), 1e-5f) << factor;
    // The fine faces of a coarse face have its value.
    test::each_cell({fx + 1, fy, fz}, 1, [&](int i, int j, int k) {
      if ((i - 1) % factor != 0) return;
      const auto at = [=](int fine) { return (fine - 1) / factor + 1; };
      EXPECT_EQ(u(i, j, k), U(at(i), at(j), at(k)));
    });
    EXPECT_THROW(scale_up_west(u, U, 1), FieldDimensionMismatchException);
  }
}

// A method that reproduces quadratics has an error that falls with the third power of the cell
// size. The function rises along every axis, so the overshoot limiter does nothing.
TEST(Interpolation, CubicIsExactForQuadraticsAndFallsBackToLinear) {
  const auto square = [](double x, double y, double z) {
    return x * x + y * y + z * z + x * y - x * z / 4 + y * z;
  };
  const Field<float> g = test::field_of({8, 8, 8}, square);
  std::mt19937 engine(7);
  std::uniform_real_distribution<float> place(1, 6);
  for (int point = 0; point < 1000; ++point) {
    const float x = place(engine), y = place(engine), z = place(engine);
    EXPECT_NEAR(sample_cubic(g, x, y, z), square(x, y, z), 2e-4);
  }
  // Cubic sampling needs 4 cells on each axis: the index may be 1 to n-3.
  for (const float x : {0.5f, 6.5f, -3.0f, 9.0f}) {
    EXPECT_EQ(sample_cubic(g, x, 3, 3), sample_linear(g, x, 3, 3));
    EXPECT_EQ(sample_cubic(g, 3, x, 3), sample_linear(g, 3, x, 3));
    EXPECT_EQ(sample_cubic(g, 3, 3, x), sample_linear(g, 3, 3, x));
  }
  // Beside a step the cubic would overshoot: it must give 1 on the upper side and 0.5 in between.
  const Field<float> step = test::field_of({8, 8, 8}, [](int i, int, int) { return i > 3; });
  EXPECT_EQ(sample_cubic(step, 4.5f, 3, 3), 1.0f);
  EXPECT_EQ(sample_cubic(step, 2.5f, 3, 3), 0.0f);
  EXPECT_FLOAT_EQ(sample_cubic(step, 3.5f, 3, 3), 0.5f);
}

}  // namespace nbx
