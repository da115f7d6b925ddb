// The field operators on MFields: each chooses GPU or CPU by the thread's flags (cuda_use_flags.h).
// Only the operators that the simulation calls have this form.
#pragma once

#include "math/int_box.h"
#include "math/mfield.h"

namespace nbx {

void m_set(MField& dst, float a);
void m_scal(MField& dst, float a, MField& x);
void m_add(MField& dst, MField& x, float a);
void m_max_a_x(MField& dst, float a, MField& x);
void m_min_a_x(MField& dst, float a, MField& x);
void m_max_ax_y(MField& dst, float a, MField& x, MField& y);
void m_add_max0(MField& dst, MField& x, float a);
void m_axpy(MField& dst, float a, MField& x, MField& y);
void m_clamp(MField& dst, float lo, float hi);
float m_infnorm(MField& x);
double m_sum(MField& x);
IntBox m_min_bbox(MField& x, float threshold);

}  // namespace nbx
