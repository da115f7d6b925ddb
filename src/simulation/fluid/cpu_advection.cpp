#include "simulation/fluid/cpu_advection.h"

#include <algorithm>

#include "math/field_checks.h"
#include "simulation/fluid/advection_kernels.h"
#include "util/exception.h"
#include "util/isa.h"
#include "util/shared_loop.h"

NBX_DECLARE_ISA(AdvectionKernels, kAdvectionKernels)

namespace nbx {

const AdvectionKernels& advection_kernels() { return NBX_SELECT_ISA(kAdvectionKernels); }

namespace {

// Cells per call of a kernel: few enough for the traces to stay in the first-level cache.
constexpr int kRun = 256;

KernelField kernel_field(const Field<float>& f) { return {f.data(), f.nx(), f.ny(), f.nz()}; }

// Four samples along each axis.
bool fits_cubic(const Field<float>& f) { return std::min({f.nx(), f.ny(), f.nz()}) >= 4; }

// Calls run(i, j, k, n) for runs of n cells along x that cover the interior of the blocks. Planes
// are shared, since the paths of the adaptive tracer differ in length.
template <class Run>
void for_runs(const Vec3i& dims, const BlockSet& blocks, const Run& run) {
  shared_loop(1, dims[2] - 1, true, [&](int k) {
    for (int j = 1; j < dims[1] - 1; ++j)
      blocks.for_each(j, k, 1, dims[0] - 1, [&](int begin, int end) {
        for (int i = begin; i < end; i += kRun) run(i, j, k, std::min(kRun, end - i));
      });
  });
}

TraceParams trace_params(const AdvectionParams& params, bool forward, const Vec3i& dims) {
  const Field<float>& U = params.velocity[0]->read_cpu();
  const Field<float>& V = params.velocity[1]->read_cpu();
  const Field<float>& W = params.velocity[2]->read_cpu();
  Vec3i grid = check_mac(U, V, W);
  if (params.lookup != Lookup::kCenter) ++grid[static_cast<int>(params.lookup)];
  if (grid != dims) throw FieldDimensionMismatchException();
  return {{kernel_field(U), kernel_field(V), kernel_field(W)},
          dims[0],
          dims[1],
          dims[2],
          forward ? params.dt : -params.dt,
          params.dx,
          params.tolerance};
}

AdvectionKernels::Trace tracer(const AdvectionParams& params) {
  return advection_kernels()
      .trace[static_cast<int>(params.tracer)][static_cast<int>(params.lookup)];
}

// The traced positions of one direction. They come from a cache, which keeps what is traced here,
// or are traced run by run.
class Positions {
 public:
  struct Scratch {
    alignas(64) float x[kRun], y[kRun], z[kRun];
  };

  Positions(AdvectionParams& params, bool forward, const Field<float>& advected,
            const BlockSet& blocks)
      : stale_(forward ? params.back_stale : params.fwd_stale),
        traced_(forward ? params.traced_back : params.traced_fwd),
        blocks_(blocks),
        trace_(tracer(params)) {
    const std::array<MField*, 3>& cache = forward ? params.trace_back : params.trace_fwd;
    cached_ = cache[0] && cache[1] && cache[2];
    const bool fresh = cached_ && !stale_ && !cache[0]->empty();
    if (!fresh) traced_ = {};
    for (int a = 0; cached_ && a < 3; ++a) {
      if (fresh) check_dims(cache[a]->read_cpu(), advected);
      data_[a] = (fresh ? cache[a]->write_cpu() : cache[a]->overwrite_cpu(advected.dims())).data();
    }
    if (!fresh || !traced_.all()) trace_params_ = trace_params(params, forward, advected.dims());
  }

  // The positions of n cells from (i, j, k) on, which is element `first`.
  TracedRun of(Scratch& scratch, std::size_t first, int i, int j, int k, int n) const {
    float* const to[3] = {cached_ ? data_[0] + first : scratch.x,
                          cached_ ? data_[1] + first : scratch.y,
                          cached_ ? data_[2] + first : scratch.z};
    if (!cached_ || !traced_.covers(i, i + n, j, k))
      trace_(to[0], to[1], to[2], trace_params_, i, j, k, n);
    return {to[0], to[1], to[2]};
  }

  // After all runs: the cache holds their positions.
  void keep() {
    if (!cached_) return;
    traced_ |= blocks_;
    stale_ = false;
  }

 private:
  bool& stale_;
  BlockSet& traced_;  // read by all threads until keep()
  const BlockSet& blocks_;
  AdvectionKernels::Trace trace_;
  TraceParams trace_params_{};
  bool cached_;
  float* data_[3]{};
};

}  // namespace

void cpu_cache_tracer(const AdvectionParams& params, bool forward, const Vec3i& dims) {
  const TraceParams q = trace_params(params, forward, dims);
  const auto trace = tracer(params);
  const std::array<MField*, 3>& cache = forward ? params.trace_back : params.trace_fwd;
  Field<float>&x = cache[0]->overwrite_cpu(dims), &y = cache[1]->overwrite_cpu(dims),
  &z = cache[2]->overwrite_cpu(dims);
  for_runs(dims, BlockSet(dims, true), [&](int i, int j, int k, int n) {
    trace(&x(i, j, k), &y(i, j, k), &z(i, j, k), q, i, j, k, n);
  });
}

void cpu_advect_sl(Field<float>& dst, const Field<float>& src, AdvectionParams& params,
                   const Gas& gas) {
  check_dims(dst, src);
  const BlockSet blocks = gas.blocks ? *gas.blocks : BlockSet(src.dims(), true);
  Positions back(params, true, src, blocks);
  const auto advect = advection_kernels().semi_lagrangian[params.cubic && fits_cubic(src)];
  for_runs(src.dims(), blocks, [&](int i, int j, int k, int n) {
    Positions::Scratch scratch;
    const std::size_t first = src.index(i, j, k);
    advect(dst.data() + first, kernel_field(src), gas.near, back.of(scratch, first, i, j, k, n), n);
  });
  back.keep();
}

void cpu_maccormack(Field<float>& dst, const Field<float>& src, const Field<float>& hat,
                    AdvectionParams& params, const Gas& gas) {
  check_dims(dst, src);
  check_dims(hat, src);
  const BlockSet blocks = gas.blocks ? *gas.blocks : BlockSet(src.dims(), true);
  Positions back(params, true, src, blocks), fwd(params, false, src, blocks);
  const auto correct = advection_kernels().maccormack[params.cubic && fits_cubic(src)];
  for_runs(src.dims(), blocks, [&](int i, int j, int k, int n) {
    Positions::Scratch from_back, from_fwd;
    const std::size_t first = src.index(i, j, k);
    correct(dst.data(), kernel_field(src), kernel_field(hat), gas.near,
            back.of(from_back, first, i, j, k, n), fwd.of(from_fwd, first, i, j, k, n), first, n);
  });
  back.keep();
  fwd.keep();
}

}  // namespace nbx
