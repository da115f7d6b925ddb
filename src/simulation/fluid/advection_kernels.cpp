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

// The last segment may be shorter; its lanes past the end stay 0.
void mark(std::uint8_t* marks, const float* row, int n) {
  const I tiny_below = reinterpret_cast<I>(splat(kTinyBelow));
  I some{}, tiny{};
  const auto look = [&](const float* p, auto count) {
    const I bits = reinterpret_cast<I>(load(p, count)), magnitude = bits & splat(0x7fffffff);
    some |= bits;
    tiny |= (magnitude != 0) & (magnitude < tiny_below);
  };
  const auto finish = [&](int segment) {
    marks[segment] = (any(some != 0) ? kValues : 0) | (any(tiny) ? kTinyValues : 0);
    some = tiny = I{};
  };
  int i = 0;
  for (; i + NearMarks::kSegment <= n; i += NearMarks::kSegment) {
    for (int l = 0; l < NearMarks::kSegment; l += W) look(row + i + l, Full());
    finish(i / NearMarks::kSegment);
  }
  if (i == n) return;
  const int segment = i / NearMarks::kSegment;
  for (; i < n; i += W) look(row + i, std::min(W, n - i));
  finish(segment);
}

template <bool cubic>
F sample(const KernelField& f, const NearMarks& marks, const Vector& p) {
  return cubic ? sample_near_cubic(f, marks, p.x, p.y, p.z)
               : sample_near_linear(f, marks, p.x, p.y, p.z);
}

template <class Count>
Vector positions(const TracedRun& run, int first, Count n) {
  return {load(run.x + first, n), load(run.y + first, n), load(run.z + first, n)};
}

template <bool cubic>
NBX_FLATTEN void semi_lagrangian(float* dst, const KernelField& src, const NearMarks& src_marks,
                                 const TracedRun& back, int n) {
  sweep(n, [&](int first, auto count) {
    store(dst + first, sample<cubic>(src, src_marks, positions(back, first, count)), count);
  });
}

template <bool cubic>
NBX_FLATTEN void maccormack(float* dst, const KernelField& src, const KernelField& hat,
                            const NearMarks& hat_marks, const TracedRun& back, const TracedRun& fwd,
                            std::size_t begin, int n) {
  const auto bits = [](F f) { return reinterpret_cast<I>(f); };
  sweep(n, [&](int first, auto count) {
    const std::size_t c = begin + first;
    const Vector p2 = positions(fwd, first, count);
    const F a = load(hat.data + c, count), here = load(src.data + c, count);
    const F b = sample<cubic>(hat, hat_marks, p2);
    // In clear air every term is +0.
    if (!any((bits(a) | bits(here) | bits(b)) != 0)) return store(dst + c, a, count);
    const F back_again = b - here;
    const F corrected =
        a - (hat_marks.data ? plain(0.5f * Careful{back_again}) : 0.5f * back_again);
    // A correction outside of the values around the origin is dropped, not clamped.
    const Vector p1 = positions(back, first, count);
    const NearCell origin = near_linear_cell(src, p1.x, p1.y, p1.z);
    const I good = in_range(near_corners(src, origin.at, NearPlace(origin.at)), corrected) &
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
    mark,
    {semi_lagrangian<false>, semi_lagrangian<true>},
    {maccormack<false>, maccormack<true>}};

}  // namespace nbx::NBX_ISA
