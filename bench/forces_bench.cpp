// The forces of a step and the curves at 128^3.
#include "bench/passes.h"
#include "math/spline_operators.h"
#include "math/wavelet_noise.h"
#include "simulation/fluid/curl_noise.h"
#include "simulation/vorticity.h"

namespace nbx {
namespace {

constexpr int kCells = 128;
constexpr std::size_t kCount = std::size_t{kCells} * kCells * kCells;

Field<float> random_field(int nx, int ny, int nz, unsigned seed) {
  Field<float> f(nx, ny, nz);
  bench::fill_random(f, seed);
  return f;
}

struct Faces {
  Field<float> U = random_field(kCells + 1, kCells, kCells, 1);
  Field<float> V = random_field(kCells, kCells + 1, kCells, 2);
  Field<float> W = random_field(kCells, kCells, kCells + 1, 3);
};

Field<float> center_field(unsigned seed) { return random_field(kCells, kCells, kCells, seed); }

// Curl, confinement and transfer to the faces, as a step runs them.
void vorticity(benchmark::State& state) {
  Faces u;
  Field<float> wx = center_field(4), wy = center_field(5), wz = center_field(6);
  Field<float> mag = center_field(7);
  bench::measure(state, kCount, [&] {
    VelocityCurl(wx, wy, wz, mag, u.U, u.V, u.W, 0.01f);
    VorticityConfinementForce(wx, wy, wz, mag, 1e-5f);
    add_center_force_to_mac(u.U, u.V, u.W, wx, wy, wz, 0.02f);
  });
}

void curl_noise(benchmark::State& state, bool scaled) {
  Faces u;
  const Field<float> psi = center_field(4), map = center_field(5);
  bench::measure(state, kCount,
                 [&] { add_curl_of_scaled(u.U, u.V, u.W, psi, scaled ? &map : nullptr, 1e-5f); });
}
void curl_noise_plain(benchmark::State& state) { curl_noise(state, false); }
void curl_noise_scaled(benchmark::State& state) { curl_noise(state, true); }

void noise_band(benchmark::State& state) {
  WaveletNoise noise;
  advance_tile(noise, 0.5f, true, false);
  Field<float> psi = center_field(4);
  bench::measure(state, kCount, [&] { noise_field(psi, noise, 0.4f, 1e-5f, {0.3f, 17.2f, 5}); });
}

void noise_tile(benchmark::State& state) {
  WaveletNoise noise;
  float t = 0;
  bench::measure(state, kCount, [&] { advance_tile(noise, t += 1, true, false); });
}

// A curve of six knots, with or without a bias.
void apply_curve(benchmark::State& state, float bias) {
  RationalSpline spline;
  for (int i = 0; i < 6; ++i)
    spline.setBias(spline.addPoint(0.2f * static_cast<float>(i), i % 2 ? 1.0f : 0.0f), bias);
  const Field<float> src = center_field(4);
  Field<float> dst = center_field(5);
  bench::measure(state, kCount, [&] { apply_function(dst, src, spline); });
}
void apply_function_hermite(benchmark::State& state) { apply_curve(state, 0.5f); }
void apply_function_rational(benchmark::State& state) { apply_curve(state, 0.7f); }

BENCHMARK(vorticity)->Unit(benchmark::kMillisecond);
BENCHMARK(curl_noise_plain)->Name("curl_noise")->Unit(benchmark::kMillisecond);
BENCHMARK(curl_noise_scaled)->Unit(benchmark::kMillisecond);
BENCHMARK(noise_band)->Unit(benchmark::kMillisecond);
BENCHMARK(noise_tile)->Unit(benchmark::kMillisecond);
BENCHMARK(apply_function_hermite)->Name("apply_function")->Unit(benchmark::kMillisecond);
BENCHMARK(apply_function_rational)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace nbx
