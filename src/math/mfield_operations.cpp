#include "math/mfield_operations.h"

#include "math/field_operators.h"
#include "math/field_reductions.h"
#include "util/cuda_use_flags.h"

namespace nbx {

void m_set(MField& dst, float a) {
  try_gpu(no_kernel, [&] { set(dst.cpu_field(), a); });
}

void m_scal(MField& dst, float a, MField& x) {
  try_gpu(no_kernel, [&] { scal(dst.cpu_field(), a, x.cpu_field()); });
}

void m_add(MField& dst, MField& x, float a) {
  try_gpu(no_kernel, [&] { add(dst.cpu_field(), x.cpu_field(), a); });
}

void m_max_a_x(MField& dst, float a, MField& x) {
  try_gpu(no_kernel, [&] { max_a_x(dst.cpu_field(), a, x.cpu_field()); });
}

void m_min_a_x(MField& dst, float a, MField& x) {
  try_gpu(no_kernel, [&] { min_a_x(dst.cpu_field(), a, x.cpu_field()); });
}

void m_max_ax_y(MField& dst, float a, MField& x, MField& y) {
  try_gpu(no_kernel, [&] { max_ax_y(dst.cpu_field(), a, x.cpu_field(), y.cpu_field()); });
}

void m_add_max0(MField& dst, MField& x, float a) {
  try_gpu(no_kernel, [&] { add_max0(dst.cpu_field(), x.cpu_field(), a); });
}

void m_axpy(MField& dst, float a, MField& x, MField& y) {
  try_gpu(no_kernel, [&] { axpy(dst.cpu_field(), a, x.cpu_field(), y.cpu_field()); });
}

void m_clamp(MField& dst, float lo, float hi) {
  try_gpu(no_kernel, [&] { clamp(dst.cpu_field(), lo, hi); });
}

float m_infnorm(MField& x) {
  float result = 0;
  try_gpu(no_kernel, [&] { result = infnorm(x.cpu_field()); });
  return result;
}

double m_sum(MField& x) {
  double result = 0;
  try_gpu(no_kernel, [&] { result = sum(x.cpu_field()); });
  return result;
}

IntBox m_min_bbox(MField& x, float threshold) {
  IntBox result;
  try_gpu(no_kernel, [&] { result = min_bbox(x.cpu_field(), threshold); });
  return result;
}

}  // namespace nbx
