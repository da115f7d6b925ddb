#include <algorithm>
#include <cmath>

#include "bench/passes.h"
#include "math/multigrid_solver3d.h"
#include "simulation/fluid/project.h"
#include "simulation/fluid_tools3d.h"

namespace nbx::bench {
namespace {

// A solve of one V-cycle from a random right-hand side, with all that a solve does once: the check
// of b, the reordering of rows, the residual.
void vcycle(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0)) + 2;
  Field<float> x(n, n, n), b(n, n, n), r0(n, n, n), buffer;
  fill_random(b, 1);
  std::fill_n(x.data(), x.count(), 0.0f);
  MultigridSolver3D solver;
  solver.setup(n, n, n, r0, buffer);
  measure(state, x.count(), [&] {
    const SolveResult result = solver.solve(x, b, 1, 1, -1, nullptr);
    benchmark::DoNotOptimize(result.residual);
  });
}
BENCHMARK(vcycle)->Arg(127)->Arg(128)->Unit(benchmark::kMillisecond);

// A box of 128^3 voxels with a jet in its middle, as a force leaves it before the projection.
struct Jet {
  static constexpr int n = 130;
  Field<float> U{n + 1, n, n}, V{n, n + 1, n}, W{n, n, n + 1}, phi{n, n, n};
  Field<float> Us{n + 1, n, n}, Vs{n, n + 1, n}, Ws{n, n, n + 1};
  Domain domain;
  MultigridSolver3D solver;

  Jet() {
    domain.domain_box = domain.active_box = {{0, 0, 0}, {n - 3, n - 3, n - 3}};
    for (Field<float>* f : {&Us, &Vs, &Ws}) std::fill_n(f->data(), f->count(), 0.0f);
    for (int k = 0; k < n; ++k)
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
          const double d = std::hypot(i - 64, j - 90, k - 64) - 15;
          phi(i, j, k) = static_cast<float>(d * std::abs(d));
        }
  }
  void start() {
    for (Field<float>* f : {&U, &V, &W}) std::fill_n(f->data(), f->count(), 0.0f);
    for (int k = 50; k < 80; ++k)
      for (int j = 20; j < 60; ++j)
        for (int i = 50; i < 80; ++i) V(i, j, k) = 0.2f;
  }
};

void bench_project(benchmark::State& state, bool solid) {
  Jet jet;
  double best = std::numeric_limits<double>::max();
  int cycles = 0, solid_passes = 0;
  float residual = 0;
  for (auto _ : state) {
    state.PauseTiming();
    jet.start();
    state.ResumeTiming();
    ProjectionFields fields;
    fields.U = &jet.U;
    fields.V = &jet.V;
    fields.W = &jet.W;
    if (solid) {
      fields.phi = &jet.phi;
      fields.Us = &jet.Us;
      fields.Vs = &jet.Vs;
      fields.Ws = &jet.Ws;
    }
    const Timer timer;
    const Projection result = project(jet.solver, fields, jet.domain, {}, 5, nullptr);
    best = std::min(best, timer.seconds());
    cycles = result.cycles;
    residual = result.residual;
    solid_passes = result.solid_passes;
  }
  report_iteration(state, std::size_t{Jet::n} * Jet::n * Jet::n, best);
  state.counters["cycles"] = cycles;
  state.counters["solid_passes"] = solid_passes;
  state.counters["residual"] = static_cast<double>(residual);
}
BENCHMARK_CAPTURE(bench_project, open, false)->Name("project")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(bench_project, solid, true)->Name("project_solid")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace nbx::bench
