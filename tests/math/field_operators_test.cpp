#include "math/field_operators.h"

#include <functional>

#include "math/mfield_operations.h"
#include "support/support.h"
#include "util/exception.h"

namespace nbx {

namespace {

constexpr float kA = 0.75f, kB = -1.5f;

using F = Field<float>;
struct Case {
  const char* name;
  std::function<void(F&, const F&, const F&)> run;
  std::function<void(MField&, MField&, MField&)> managed;
  std::function<float(float, float)> expected;
};

const Case cases[] = {
    {"set", [](F& d, const F&, const F&) { set(d, kA); },
     [](MField& d, MField&, MField&) { m_set(d, kA); }, [](float, float) { return kA; }},
    {"max_a_x", [](F& d, const F& x, const F&) { max_a_x(d, kA, x); },
     [](MField& d, MField& x, MField&) { m_max_a_x(d, kA, x); },
     [](float x, float) { return x < kA ? kA : x; }},
    {"min_a_x", [](F& d, const F& x, const F&) { min_a_x(d, kA, x); },
     [](MField& d, MField& x, MField&) { m_min_a_x(d, kA, x); },
     [](float x, float) { return x > kA ? kA : x; }},
    {"scal", [](F& d, const F& x, const F&) { scal(d, kA, x); },
     [](MField& d, MField& x, MField&) { m_scal(d, kA, x); },
     [](float x, float) { return kA * x; }},
    {"add", [](F& d, const F& x, const F&) { add(d, x, kA); },
     [](MField& d, MField& x, MField&) { m_add(d, x, kA); }, [](float x, float) { return x + kA; }},
    {"add_max0", [](F& d, const F& x, const F&) { add_max0(d, x, kA); },
     [](MField& d, MField& x, MField&) { m_add_max0(d, x, kA); },
     [](float x, float) { return x + kA > 0 ? x + kA : 0; }},
    {"max_ax_y", [](F& d, const F& x, const F& y) { max_ax_y(d, kA, x, y); },
     [](MField& d, MField& x, MField& y) { m_max_ax_y(d, kA, x, y); },
     [](float x, float y) { return kA * x > y ? kA * x : y; }},
    {"axpy", [](F& d, const F& x, const F& y) { axpy(d, kA, x, y); },
     [](MField& d, MField& x, MField& y) { m_axpy(d, kA, x, y); },
     [](float x, float y) { return kA * x + y; }},
    {"axpby",
     [](F& d, const F& x, const F& y) { axpby(d, kA, x, kB, y); },
     {},
     [](float x, float y) { return kA * x + kB * y; }},
    {"clamp", [](F& d, const F& x, const F&) { d.copy(x), clamp(d, kB, kA); },
     [](MField& d, MField& x, MField&) { d.assign(x), m_clamp(d, kB, kA); },
     [](float x, float) { return std::min(std::max(x, kB), kA); }},
};

}  // namespace

TEST(FieldOperators, ActOnEveryElement) {
  const test::ThreadCount threads(3);
  // Below, at and above the sizes at which vectors, blocks and threads begin.
  for (const int n : {0, 1, 3, 4, 7, 16383, 16385, 65535, 65536, 100003}) {
    MField x(kCpu, {n, 1, 1}), y(kCpu, {1, n, 1}), out(kCpu, {1, 1, n});
    F &fx = x.cpu_field(), &fy = y.cpu_field(), &dst = out.cpu_field();
    test::fill_random(fx, 1, -3, 3);
    test::fill_random(fy, 2, -3, 3);
    const auto wrong = [&](const Case& c) {
      int count = 0;
      for (std::size_t i = 0; i < fx.count(); ++i) count += dst[i] != c.expected(fx[i], fy[i]);
      return count;
    };
    for (const Case& c : cases) {
      c.run(dst, fx, fy);
      EXPECT_EQ(wrong(c), 0) << c.name << " of " << n;
      if (!c.managed) continue;
      std::fill_n(dst.data(), dst.count(), 77.0f);
      c.managed(out, x, y);
      EXPECT_EQ(wrong(c), 0) << "m_" << c.name << " of " << n;
    }
    axpy(dst, kA, fx, fy);
    axpy(fy, kA, fx, fy);
    EXPECT_TRUE(std::equal(fy.data(), fy.data() + n, dst.data())) << "in place";
  }
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

}  // namespace nbx
