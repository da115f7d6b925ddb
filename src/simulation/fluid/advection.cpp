#include "simulation/fluid/advection.h"

#include <cassert>

#include "simulation/fluid/channel_walls.h"
#include "simulation/fluid/cpu_advection.h"
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

bool present(const std::array<MField*, 3>& cache) { return cache[0] && cache[1] && cache[2]; }

void refresh(const std::array<MField*, 3>& cache, bool& stale, bool forward,
             const AdvectionParams& params, const Vec3i& dims) {
  if (!present(cache) || !(stale || cache[0]->empty())) return;
  cpu_cache_tracer(params, forward, dims);
  stale = false;
}

// Beside a wall, channels are sampled between the cell at the wall and its ghost.
void extend_channel_to_walls(MField& field, const AdvectionParams& params) {
  if (params.lookup != Lookup::kCenter || !params.domain) return;
  try_gpu(no_kernel, [&] { extend_to_walls(field.write_cpu(), *params.domain); });
}

}  // namespace

void advect(MField& dst, MField& src, AdvectionParams& params) {
  assert(&dst != &src);
  MField hat(thread_location(), src.dims());
  extend_channel_to_walls(src, params);
  advect_sl(hat, src, params);
  extend_channel_to_walls(hat, params);
  maccormack(dst, src, hat, params);
}

void advect_sl(MField& dst, MField& src, AdvectionParams& params) {
  try_gpu(no_kernel, [&] {
    refresh(params.trace_back, params.back_stale, true, params, src.dims());
    cpu_advect_sl(dst.overwrite_cpu(src.dims()), src.read_cpu(), params);
  });
  apply_boundary(dst, params);
}

void maccormack(MField& dst, MField& src, MField& hat, AdvectionParams& params) {
  try_gpu(no_kernel, [&] {
    refresh(params.trace_fwd, params.fwd_stale, false, params, src.dims());
    refresh(params.trace_back, params.back_stale, true, params, src.dims());
    cpu_maccormack(dst.overwrite_cpu(src.dims()), src.read_cpu(), hat.read_cpu(), params);
  });
  apply_boundary(dst, params);
}

}  // namespace nbx
