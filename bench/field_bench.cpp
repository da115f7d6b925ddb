// Operators and reductions at 256^3, filters at 128^3.
#include "bench/passes.h"
#include "math/field_filters.h"
#include "math/field_operators.h"
#include "math/field_reductions.h"

namespace nbx::bench {

namespace {

Field<float>& random_field(int n, unsigned seed) {
  static Field<float> fields[4];
  Field<float>& f = fields[seed];
  if (f.nx() != n) {
    f.resize(n, n, n);
    fill_random(f, seed);
  }
  return f;
}

void bench_axpy(benchmark::State& state) {
  Field<float>&dst = random_field(256, 0), &x = random_field(256, 1), &y = random_field(256, 2);
  measure(state, dst.count(), [&] { axpy(dst, 0.5f, x, y); });
}
BENCHMARK(bench_axpy)->Name("axpy");

void bench_max_ax_y(benchmark::State& state) {
  Field<float>&dst = random_field(256, 0), &x = random_field(256, 1), &y = random_field(256, 2);
  measure(state, dst.count(), [&] { max_ax_y(dst, 0.5f, x, y); });
}
BENCHMARK(bench_max_ax_y)->Name("max_ax_y");

void bench_sum(benchmark::State& state) {
  const Field<float>& x = random_field(256, 1);
  measure(state, x.count(), [&] { benchmark::DoNotOptimize(sum(x)); });
}
BENCHMARK(bench_sum)->Name("sum");

void bench_infnorm(benchmark::State& state) {
  const Field<float>& x = random_field(256, 1);
  measure(state, x.count(), [&] { benchmark::DoNotOptimize(infnorm(x)); });
}
BENCHMARK(bench_infnorm)->Name("infnorm");

void bench_max(benchmark::State& state) {
  const Field<float>& x = random_field(256, 1);
  measure(state, x.count(), [&] { benchmark::DoNotOptimize(max(x)); });
}
BENCHMARK(bench_max)->Name("max");

// A plume fills the middle of its box; most rows hold nothing.
void bench_min_bbox(benchmark::State& state) {
  Field<float> x(256, 256, 256);
  set(x, 0.0f);
  for (int k = 100; k < 156; ++k)
    for (int j = 100; j < 156; ++j)
      for (int i = 100; i < 156; ++i) x(i, j, k) = 1;
  measure(state, x.count(), [&] { benchmark::DoNotOptimize(min_bbox(x, 0.5f)); });
}
BENCHMARK(bench_min_bbox)->Name("min_bbox");

void bench_convolve3D(benchmark::State& state) {
  Field<float>&field = random_field(128, 0), &tmp = random_field(128, 1);
  Field<float> filter(4, 1, 1);
  set(filter, 1.0f / 7);
  measure(state, field.count(), [&] { convolve3D(filter, field, tmp); });
}
BENCHMARK(bench_convolve3D)->Name("convolve3D");

void bench_box_blur(benchmark::State& state) {
  Field<float>&field = random_field(128, 0), &tmp = random_field(128, 1);
  const double radius = state.range(0);
  measure(state, field.count(), [&] { box_blur3D(field, tmp, radius); });
}
BENCHMARK(bench_box_blur)->Name("box_blur")->DenseRange(1, 16);

}  // namespace

}  // namespace nbx::bench
