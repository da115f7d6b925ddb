// Tracing and transport at 128^3 in a smooth flow that moves its content by up to 2 cells a step.
#include <cmath>

#include "bench/passes.h"
#include "simulation/fluid/cpu_advection.h"

namespace nbx {
namespace {

constexpr int kCells = 128;
constexpr std::size_t kCount = std::size_t{kCells} * kCells * kCells;

// A box of whirls with a CFL number of 2, and records that advect in it.
struct Flow {
  Flow() {
    for (int a = 0; a < 3; ++a) {
      Vec3i dims(kCells, kCells, kCells);
      ++dims[a];
      velocity[a].resize(kCpu, dims);
      Field<float>& f = velocity[a].overwrite_cpu();
      for (int k = 0; k < dims[2]; ++k)
        for (int j = 0; j < dims[1]; ++j)
          for (int i = 0; i < dims[0]; ++i) {
            const double x[3] = {0.11 * i, 0.13 * j, 0.09 * k};
            f(i, j, k) =
                static_cast<float>(std::sin(x[(a + 1) % 3] + 0.3) + std::cos(1.7 * x[(a + 2) % 3]));
          }
      params.velocity[a] = &velocity[a];
      params.trace_back[a] = &back[a];
      params.trace_fwd[a] = &fwd[a];
    }
    params.dt = params.dx = 1;
    params.domain = &domain;
  }

  MField velocity[3], back[3], fwd[3];
  Domain domain;
  AdvectionParams params;
};

void trace(benchmark::State& state, Tracer tracer) {
  Flow flow;
  flow.params.tracer = tracer;
  const Vec3i dims(kCells, kCells, kCells);
  bench::measure(
      state, kCount, [&] { cpu_cache_tracer(flow.params, true, dims); }, 12);
}
void trace_rk2(benchmark::State& state) { trace(state, Tracer::kRK2); }
void trace_adaptive(benchmark::State& state) { trace(state, Tracer::kAdaptive); }

void maccormack_scalar(benchmark::State& state, bool cubic) {
  Flow flow;
  flow.params.cubic = cubic;
  MField src(kCpu, {kCells, kCells, kCells}), dst;
  bench::fill_random(src.overwrite_cpu(), 1);
  bench::measure(
      state, kCount, [&] { advect(dst, src, flow.params); }, 4);
}
void maccormack_linear(benchmark::State& state) { maccormack_scalar(state, false); }
void maccormack_cubic(benchmark::State& state) { maccormack_scalar(state, true); }

// The three components as a step moves them: one cache for the trace back, none for the other.
void advect_velocity(benchmark::State& state) {
  Flow flow;
  flow.params.trace_fwd = {};
  MField moved[3];
  bench::measure(state, kCount, [&] {
    for (int a = 0; a < 3; ++a) {
      flow.params.lookup = static_cast<Lookup>(a);
      flow.params.back_stale = true;
      advect(moved[a], flow.velocity[a], flow.params);
    }
  });
}

BENCHMARK(trace_rk2)->Unit(benchmark::kMillisecond);
BENCHMARK(trace_adaptive)->Unit(benchmark::kMillisecond);
BENCHMARK(maccormack_linear)->Unit(benchmark::kMillisecond);
BENCHMARK(maccormack_cubic)->Unit(benchmark::kMillisecond);
BENCHMARK(advect_velocity)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace nbx
