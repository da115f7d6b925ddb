#include "math/field_operators.h"

#include <functional>

#include "support/support.h"
#include "util/exception.h"

namespace nbx {

namespace {

constexpr float kA = 0.75f, kB = -1.5f;

struct Case {
  const char* name;
  std::function<void(Field<float>&, const Field<float>&, const Field<float>&)> run;
  std::function<float(float, float)> expected;
};

using F = Field<float>;
const Case cases[] = {
    {"set", [](F& d, const F&, const F&) { set(d, kA); }, [](float, float) { return kA; }},
    {"add_max0", [](F& d, const F& x, const F&) { add_max0(d, x, kA); },
     [](float x, float) { return x + kA > 0 ? x + kA : 0; }},
    {"max_ax_y", [](F& d, const F& x, const F& y) { max_ax_y(d, kA, x, y); },
     [](float x, float y) { return kA * x > y ? kA * x : y; }},
    {"axpby", [](F& d, const F& x, const F& y) { axpby(d, kA, x, kB, y); },
     [](float x, float y) { return kA * x + kB * y; }},
    {"clamp",
     [](F& d, const F& x, const F&) {
       d.copy(x);
       clamp(d, kB, kA);
     },
     [](float x, float) { return x < kB   ? kB
                                 : x > kA ? kA
                                          : x; }},
};

}  // namespace

TEST(FieldOperators, ActOnEveryElement) {
  const test::ThreadCount threads(3);
  // Below, at and above the sizes at which vectors, blocks and threads begin.
  for (const int n : {0, 1, 3, 4, 7, 16383, 16385, 65535, 65536, 100003}) {
    F x(n, 1, 1), y(1, n, 1), dst(1, 1, n);
    test::fill_random(x, 1, -3, 3);
    test::fill_random(y, 2, -3, 3);
    for (const Case& c : cases) {
      c.run(dst, x, y);
      int wrong = 0;
      for (std::size_t i = 0; i < dst.count(); ++i) wrong += dst[i] != c.expected(x[i], y[i]);
      EXPECT_EQ(wrong, 0) << c.name << " of " << n;
    }
    axpy(dst, kA, x, y);
    axpy(y, kA, x, y);
    EXPECT_TRUE(std::equal(y.data(), y.data() + n, dst.data())) << "in place";
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
