// Transport of a scalar, which leaves most of a box empty: its stages work where gas can be.
#pragma once

#include "math/field.h"
#include "simulation/fluid/advection.h"

namespace nbx {

/// See advect.
void cpu_advect_scalar(Field<float>& dst, Field<float>& src, AdvectionParams& params);

/// The same in place; `scratch` has the dimensions of `field`.
void cpu_advect_scalar_in_place(Field<float>& field, Field<float>& scratch,
                                AdvectionParams& params);

}  // namespace nbx
