#include "math/mfield_operations.h"

#include "math/field_operators.h"
#include "math/field_reductions.h"
#include "util/cuda_use_flags.h"

namespace nbx {

void m_set(MField& dst, float a) {
  try_gpu(no_kernel, [&] { on_cpu([&](auto& d) { set(d, a); }, dst); });
}

void m_scal(MField& dst, float a, const MField& x, const Occupancy* held) {
  try_gpu(no_kernel, [&] { on_cpu([&](auto& d, auto& fx) { scal(d, a, fx, held); }, dst, x); });
}

void m_add(MField& dst, const MField& x, float a) {
  try_gpu(no_kernel, [&] { on_cpu([&](auto& d, auto& fx) { add(d, fx, a); }, dst, x); });
}

void m_max_a_x(MField& dst, float a, const MField& x) {
  try_gpu(no_kernel, [&] { on_cpu([&](auto& d, auto& fx) { max_a_x(d, a, fx); }, dst, x); });
}

void m_min_a_x(MField& dst, float a, const MField& x, const Occupancy* held) {
  try_gpu(no_kernel, [&] { on_cpu([&](auto& d, auto& fx) { min_a_x(d, a, fx, held); }, dst, x); });
}

void m_max_ax_y(MField& dst, float a, const MField& x, const MField& y) {
  try_gpu(no_kernel,
          [&] { on_cpu([&](auto& d, auto& fx, auto& fy) { max_ax_y(d, a, fx, fy); }, dst, x, y); });
}

void m_add_max0(MField& dst, const MField& x, float a, const Occupancy* held) {
  try_gpu(no_kernel, [&] { on_cpu([&](auto& d, auto& fx) { add_max0(d, fx, a, held); }, dst, x); });
}

void m_axpy(MField& dst, float a, const MField& x, const MField& y, const Occupancy* held) {
  try_gpu(no_kernel, [&] {
    on_cpu([&](auto& d, auto& fx, auto& fy) { axpy(d, a, fx, fy, held); }, dst, x, y);
  });
}

void m_measure(Occupancy& held, const MField& x) {
  try_gpu(no_kernel, [&] { held.measure(x.read_cpu()); });
}

void m_measure_positive(Occupancy& held, MField& x) {
  try_gpu(no_kernel, [&] { held.measure_positive(x.write_cpu()); });
}

void m_clamp(MField& dst, float lo, float hi) {
  try_gpu(no_kernel, [&] { clamp(dst.write_cpu(), lo, hi); });
}

float m_infnorm(const MField& x) {
  float result = 0;
  try_gpu(no_kernel, [&] { result = infnorm(x.read_cpu()); });
  return result;
}

double m_sum(const MField& x) {
  double result = 0;
  try_gpu(no_kernel, [&] { result = sum(x.read_cpu()); });
  return result;
}

IntBox m_min_bbox(const MField& x, float threshold) {
  IntBox result;
  try_gpu(no_kernel, [&] { result = min_bbox(x.read_cpu(), threshold); });
  return result;
}

}  // namespace nbx
