// Element-wise operators on whole fields. They check alignment and element counts, then run over
// the fields as flat arrays, large ones on all threads. `dst` may be one of the sources.
//
// Some take the parts of the fields to work on. Elsewhere a `dst` that is one of the sources keeps
// its values; any other becomes 0.
#pragma once

#include "math/field.h"
#include "math/occupancy.h"

namespace nbx {

void set(Field<float>& dst, float a);                             // dst = a
void max_a_x(Field<float>& dst, float a, const Field<float>& x);  // max(a, x)
void min_a_x(Field<float>& dst, float a, const Field<float>& x,
             const Occupancy* held = nullptr);  // min(a, x)
void scal(Field<float>& dst, float a, const Field<float>& x,
          const Occupancy* held = nullptr);                   // a x
void add(Field<float>& dst, const Field<float>& x, float a);  // x + a
void add_max0(Field<float>& dst, const Field<float>& x, float a,
              const Occupancy* held = nullptr);  // max(x + a, 0)
void max_ax_y(Field<float>& dst, float a, const Field<float>& x,
              const Field<float>& y);  // max(y, a x)
void axpy(Field<float>& dst, float a, const Field<float>& x, const Field<float>& y,
          const Occupancy* held = nullptr);  // a x + y
void axpby(Field<float>& dst, float a, const Field<float>& x, float b,
           const Field<float>& y);                  // a x + b y
void clamp(Field<float>& dst, float lo, float hi);  // min(max(dst, lo), hi)

}  // namespace nbx
