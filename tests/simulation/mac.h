// A velocity on the faces of n cells, for tests to fill and compare.
#pragma once

#include "math/field_operators.h"
#include "support/support.h"

namespace nbx::test {

struct Mac {
  explicit Mac(const Vec3i& n)
      : U(n[0] + 1, n[1], n[2]), V(n[0], n[1] + 1, n[2]), W(n[0], n[1], n[2] + 1) {
    zero();
  }
  void zero() {
    for (Field<float>* f : {&U, &V, &W}) set(*f, 0);
  }
  void randomize(unsigned seed, float most = 1) {
    for (Field<float>* f : {&U, &V, &W}) fill_random(*f, seed++, -most, most);
  }
  void copy(Mac& other) {
    for (int axis = 0; axis < 3; ++axis) face(axis).copy(other.face(axis));
  }
  bool same(const Mac& b) const {
    return same_bits(U, b.U) && same_bits(V, b.V) && same_bits(W, b.W);
  }
  Field<float>& face(int axis) { return axis == 0 ? U : axis == 1 ? V : W; }
  Field<float> U, V, W;
};

}  // namespace nbx::test
