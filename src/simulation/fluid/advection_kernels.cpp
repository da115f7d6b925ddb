#include "simulation/fluid/advection_kernels.h"

#include "simulation/fluid/tracers.h"

namespace nbx::NBX_ISA {

namespace {

template <template <int> class Tracer, int lookup>
NBX_FLATTEN void trace(float* x, float* y, float* z, const TraceParams& params, int i, int j, int k,
                       int n) {
  const Velocity<lookup> velocity(params);
  sweep(n, [&](int first, auto count) {
    const int at = i + first;
    const Vector p{splat(static_cast<float>(at)) + iota(), splat(static_cast<float>(j)),
                   splat(static_cast<float>(k))};
    const Vector v = velocity.at_sample(at, j, k, count);
    const Vector from = Tracer<lookup>::trace(params, velocity, p, v);
    store(x + first, from.x, count);
    store(y + first, from.y, count);
    store(z + first, from.z, count);
  });
}

template <bool cubic>
F sample(const KernelField& f, const Vector& p) {
  return cubic ? sample_near_cubic(f, p.x, p.y, p.z) : sample_near_linear(f, p.x, p.y, p.z);
}

template <class Count>
Vector positions(const TracedRun& run, int first, Count n) {
  return {load(run.x + first, n), load(run.y + first, n), load(run.z + first, n)};
}

template <bool cubic>
NBX_FLATTEN void semi_lagrangian(float* dst, const KernelField& src, const TracedRun& back, int n) {
  sweep(n, [&](int first, auto count) {
    store(dst + first, sample<cubic>(src, positions(back, first, count)), count);
  });
}

template <bool cubic>
NBX_FLATTEN void maccormack(float* dst, const KernelField& src, const KernelField& hat,
                            const TracedRun& back, const TracedRun& fwd, std::size_t begin, int n) {
  sweep(n, [&](int first, auto count) {
    const std::size_t c = begin + first;
    const Vector p1 = positions(back, first, count), p2 = positions(fwd, first, count);
    const F a = load(hat.data + c, count);
    const F b = sample<cubic>(hat, p2);
    const F corrected = a - 0.5f * (b - load(src.data + c, count));
    // A correction outside of the values around the origin is dropped, not clamped.
    const I good =
        in_range(near_corners(src, near_linear_cell(src, p1.x, p1.y, p1.z).at), corrected) &
        inside(p1, src.nx, src.ny, src.nz) & inside(p2, src.nx, src.ny, src.nz);
    store(dst + c, select(good, corrected, a), count);
  });
}

}  // namespace

extern const AdvectionKernels kAdvectionKernels;
const AdvectionKernels kAdvectionKernels{
    {{trace<RK2Tracer, 0>, trace<RK2Tracer, 1>, trace<RK2Tracer, 2>, trace<RK2Tracer, 3>},
     {trace<AdaptiveTracer, 0>, trace<AdaptiveTracer, 1>, trace<AdaptiveTracer, 2>,
      trace<AdaptiveTracer, 3>}},
    {semi_lagrangian<false>, semi_lagrangian<true>},
    {maccormack<false>, maccormack<true>}};

}  // namespace nbx::NBX_ISA
