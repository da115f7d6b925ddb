#include "simulation/fluid/advection.h"

#include <cassert>

#include "simulation/fluid/cpu_advection.h"
#include "simulation/fluid/scalar_advection.h"
#include "simulation/fluid_tools3d.h"
#include "util/cuda_use_flags.h"

namespace nbx {

namespace {

// Every stage ends with the boundary of what it moves.
void apply_boundary(MField& dst, const AdvectionParams& params) {
  if (params.lookup == Lookup::kCenter)
    m_set_border(dst, 0.0f);
  else
    m_velocity_boundary(static_cast<int>(params.lookup), dst, *params.domain);
}

}  // namespace

void advect(MField& dst, MField& src, AdvectionParams& params) {
  assert(&dst != &src);
  if (params.lookup == Lookup::kCenter)
    return try_gpu(no_kernel, [&] {
      cpu_advect_scalar(dst.overwrite_cpu(src.dims()), src.write_cpu(), params);
    });
  MField hat(thread_location(), src.dims());
  advect_sl(hat, src, params);
  try_gpu(no_kernel, [&] {
    cpu_maccormack(dst.overwrite_cpu(src.dims()), src.read_cpu(), hat.read_cpu(), params);
  });
  apply_boundary(dst, params);
}

void advect_scalar(MField& field, AdvectionParams& params) {
  try_gpu(no_kernel, [&] {
    const FieldHandle moved = acquire_field(field.dims());
    cpu_advect_scalar_in_place(field.write_cpu(), *moved, params);
  });
}

void advect_sl(MField& dst, MField& src, AdvectionParams& params) {
  try_gpu(no_kernel, [&] { cpu_advect_sl(dst.overwrite_cpu(src.dims()), src.read_cpu(), params); });
  apply_boundary(dst, params);
}

}  // namespace nbx
