// The field operators on MFields. Each runs on the GPU or on the CPU, as the thread's flags say
// (util/cuda_use_flags.h). `dst` may be one of the sources. Only the operators that the simulation
// calls have this form.
#pragma once

#include "math/int_box.h"
#include "math/mfield.h"
#include "math/occupancy.h"

namespace nbx {

void m_set(MField& dst, float a);
void m_scal(MField& dst, float a, const MField& x, const Occupancy* held = nullptr);
void m_add(MField& dst, const MField& x, float a);
void m_max_a_x(MField& dst, float a, const MField& x);
void m_min_a_x(MField& dst, float a, const MField& x, const Occupancy* held = nullptr);
void m_max_ax_y(MField& dst, float a, const MField& x, const MField& y);
void m_add_max0(MField& dst, const MField& x, float a, const Occupancy* held = nullptr);
void m_axpy(MField& dst, float a, const MField& x, const MField& y,
            const Occupancy* held = nullptr);
void m_clamp(MField& dst, float lo, float hi);
/// Occupancy::measure and Occupancy::measure_positive.
void m_measure(Occupancy& held, const MField& x);
void m_measure_positive(Occupancy& held, MField& x);
float m_infnorm(const MField& x);
double m_sum(const MField& x);
IntBox m_min_bbox(const MField& x, float threshold);

}  // namespace nbx
