#include "simulation/fluid/cpu_advection.h"

#include <algorithm>
#include <optional>

#include "math/field_checks.h"
#include "simulation/fluid/advection_kernels.h"
#include "simulation/fluid/gas_marks.h"
#include "simulation/fluid_tools3d.h"
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

// Calls run(i, j, k, n) for runs of n cells along x that cover the interior. Planes are
// shared, since the paths of the adaptive tracer differ in length.
template <class Run>
void for_runs(const Vec3i& dims, const Run& run) {
  shared_loop(1, dims[2] - 1, true, [&](int k) {
    for (int j = 1; j < dims[1] - 1; ++j)
      for (int i = 1; i < dims[0] - 1; i += kRun) run(i, j, k, std::min(kRun, dims[0] - 1 - i));
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

// The traced positions of one direction, from a cache or traced run by run.
class Positions {
 public:
  struct Scratch {
    alignas(64) float x[kRun], y[kRun], z[kRun];
  };

  Positions(const AdvectionParams& params, bool forward, const Field<float>& advected) {
    const std::array<MField*, 3>& cache = forward ? params.trace_back : params.trace_fwd;
    cached_ = cache[0] && cache[1] && cache[2];
    if (!cached_) {
      trace_ = tracer(params);
      trace_params_ = trace_params(params, forward, advected.dims());
      return;
    }
    for (int a = 0; a < 3; ++a) {
      check_dims(cache[a]->read_cpu(), advected);
      data_[a] = cache[a]->read_cpu().data();
    }
  }

  // The positions of n cells from (i, j, k) on, which is element `first`.
  TracedRun of(Scratch& scratch, std::size_t first, int i, int j, int k, int n) const {
    if (cached_) return {data_[0] + first, data_[1] + first, data_[2] + first};
    trace_(scratch.x, scratch.y, scratch.z, trace_params_, i, j, k, n);
    return {scratch.x, scratch.y, scratch.z};
  }

 private:
  bool cached_;
  const float* data_[3]{};
  AdvectionKernels::Trace trace_ = nullptr;
  TraceParams trace_params_{};
};

// Channels leave most of a box empty; the velocity doesn't.
class Skipped {
 public:
  Skipped(const AdvectionParams& params, const Field<float>& sampled) {
    if (params.lookup == Lookup::kCenter && !seems_full(sampled)) marks_.emplace(sampled);
  }
  NearMarks near() const { return marks_ ? marks_->near() : NearMarks{}; }

 private:
  std::optional<GasMarks> marks_;
};

}  // namespace

void cpu_cache_tracer(const AdvectionParams& params, bool forward, const Vec3i& dims) {
  const TraceParams q = trace_params(params, forward, dims);
  const auto trace = tracer(params);
  const std::array<MField*, 3>& cache = forward ? params.trace_back : params.trace_fwd;
  Field<float>&x = cache[0]->overwrite_cpu(dims), &y = cache[1]->overwrite_cpu(dims),
  &z = cache[2]->overwrite_cpu(dims);
  for_runs(dims, [&](int i, int j, int k, int n) {
    trace(&x(i, j, k), &y(i, j, k), &z(i, j, k), q, i, j, k, n);
  });
}

void cpu_advect_sl(Field<float>& dst, const Field<float>& src, const AdvectionParams& params) {
  check_dims(dst, src);
  const Positions back(params, true, src);
  const bool cubic = params.cubic && fits_cubic(src);
  const Skipped skipped(params, src);
  const NearMarks marks = skipped.near();
  const auto advect = advection_kernels().semi_lagrangian[cubic];
  for_runs(src.dims(), [&](int i, int j, int k, int n) {
    Positions::Scratch scratch;
    const std::size_t first = src.index(i, j, k);
    advect(dst.data() + first, kernel_field(src), marks, back.of(scratch, first, i, j, k, n), n);
  });
}

void cpu_maccormack(Field<float>& dst, const Field<float>& src, const Field<float>& hat,
                    const AdvectionParams& params) {
  check_dims(dst, src);
  check_dims(hat, src);
  const Positions back(params, true, src), fwd(params, false, src);
  const auto correct = advection_kernels().maccormack[params.cubic && fits_cubic(src)];
  const Skipped skipped(params, hat);
  const NearMarks marks = skipped.near();
  set_border(dst, 0.0f);
  for_runs(src.dims(), [&](int i, int j, int k, int n) {
    Positions::Scratch from_back, from_fwd;
    const std::size_t first = src.index(i, j, k);
    correct(dst.data(), kernel_field(src), kernel_field(hat), marks,
            back.of(from_back, first, i, j, k, n), fwd.of(from_fwd, first, i, j, k, n), first, n);
  });
}

}  // namespace nbx
