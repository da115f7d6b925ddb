// Applies a curve to whole fields, cell by cell, in parallel. With s = spline(driver) and
// c = max(s, 0), each decay operator removes what its emit counterpart yields.
//
// All operands must have the same number of cells, else FieldDimensionMismatchException; `dst` may
// be one of the sources. A dirty spline is rebuilt first. NaN in a source gives NaN (in a driver,
// if the curve has two knots or more). With `held`, they work on its parts (see field_operators.h).
#pragma once

#include "math/mfield.h"
#include "math/occupancy.h"
#include "math/rational_spline.h"

namespace nbx {

// dst = spline(src)
void apply_function(Field<float>& dst, const Field<float>& src, RationalSpline& spline);

// dst = max(0, src - min(a, c))
void decay_linear(Field<float>& dst, const Field<float>& src, const Field<float>& driver, float a,
                  RationalSpline& spline, const Occupancy* held = nullptr);
// dst = min(src, min(a, c))
void emit_linear(Field<float>& dst, const Field<float>& src, const Field<float>& driver, float a,
                 RationalSpline& spline, const Occupancy* held = nullptr);
// dst = src - a min(src, c)
void decay_exponential(Field<float>& dst, const Field<float>& src, const Field<float>& driver,
                       float a, RationalSpline& spline, const Occupancy* held = nullptr);
// dst = a min(src, c)
void emit_exponential(Field<float>& dst, const Field<float>& src, const Field<float>& driver,
                      float a, RationalSpline& spline, const Occupancy* held = nullptr);

void m_apply_function(MField& dst, const MField& src, RationalSpline& spline);
void m_decay_linear(MField& dst, const MField& src, const MField& driver, float a,
                    RationalSpline& spline, const Occupancy* held = nullptr);
void m_emit_linear(MField& dst, const MField& src, const MField& driver, float a,
                   RationalSpline& spline, const Occupancy* held = nullptr);
void m_decay_exponential(MField& dst, const MField& src, const MField& driver, float a,
                         RationalSpline& spline, const Occupancy* held = nullptr);
void m_emit_exponential(MField& dst, const MField& src, const MField& driver, float a,
                        RationalSpline& spline, const Occupancy* held = nullptr);

}  // namespace nbx
