#include "render/light/sweep_kernels.h"

#include "math/lanes/lane_exp.h"

namespace nbx::NBX_ISA {

namespace {

void restart(const SweepRays& rays, std::int32_t generation, int n) {
  for (int i = 0; i < n; ++i) {
    const bool left = generation > rays.generation[i];
    rays.generation[i] = left ? generation : rays.generation[i];
    for (float* light : rays.light) light[i] = left ? 0.0f : light[i];
  }
}

template <class Count>
void cross_lanes(const SweepCells& cells, const SweepRays& rays, float length, int i, Count n) {
  const F extinction = load(cells.extinction + i, n);
  const F kept = exp(extinction * -length);
  const I fogged = extinction > 0.0f;
  for (int c = 0; c < 3; ++c) {
    const F light = load(rays.light[c] + i, n);
    const F scattering = load(cells.scattering[c] + i, n);
    const F caught = light - light * exp(scattering * -length);
    const F sum = load(cells.caught[c] + i, n);
    store(cells.caught[c] + i, select((light > 0.0f) & (scattering > 0.0f), sum + caught, sum), n);
    const F carried = light * kept + load(cells.source[c] + i, n) * (1.0f - kept);
    store(rays.light[c] + i, select(fogged, carried, light), n);
  }
}

NBX_FLATTEN void cross(const SweepCells& cells, const SweepRays& rays, float length, int n) {
  int i = 0;
  for (; i + W <= n; i += W) cross_lanes(cells, rays, length, i, Full());
  if (i < n) cross_lanes(cells, rays, length, i, n - i);
}

}  // namespace

extern const SweepKernels kSweepKernels;
const SweepKernels kSweepKernels{restart, cross};

}  // namespace nbx::NBX_ISA
