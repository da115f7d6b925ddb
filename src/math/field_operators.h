// Element-wise operators on whole fields. They check alignment and element counts, then run over
// the fields as flat arrays, large ones on all threads. `dst` may be one of the sources.
#pragma once

#include "math/field.h"

namespace nbx {

void set(Field<float>& dst, float a);                              // dst = a
void max_a_x(Field<float>& dst, float a, const Field<float>& x);   // max(a, x)
void min_a_x(Field<float>& dst, float a, const Field<float>& x);   // min(a, x)
void scal(Field<float>& dst, float a, const Field<float>& x);      // a x
void add(Field<float>& dst, const Field<float>& x, float a);       // x + a
void add_max0(Field<float>& dst, const Field<float>& x, float a);  // max(x + a, 0)
void max_ax_y(Field<float>& dst, float a, const Field<float>& x,
              const Field<float>& y);                                                 // max(y, a x)
void axpy(Field<float>& dst, float a, const Field<float>& x, const Field<float>& y);  // a x + y
void axpby(Field<float>& dst, float a, const Field<float>& x, float b,
           const Field<float>& y);                  // a x + b y
void clamp(Field<float>& dst, float lo, float hi);  // min(max(dst, lo), hi)

}  // namespace nbx
