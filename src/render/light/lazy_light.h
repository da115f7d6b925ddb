// A grid of light whose cells are computed when a ray first needs them.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <thread>

#include "render/light/light_kernels.h"
#include "render/march/sample_block.h"

namespace nbx {

/// Any number of threads may look up light at once. `compute(i, j, k)` returns the Color of a cell,
/// which must not depend on the thread. Several threads may compute the same cell; one of them
/// stores it. Untouched parts of the grid take no memory.
class LazyLight {
 public:
  /// Throws std::bad_alloc.
  explicit LazyLight(const Vec3i& dims);

  const Vec3i& dims() const { return dims_; }

  template <class Compute>
  Color cell(int i, int j, int k, const Compute& compute) {
    const std::size_t at = Field3::index(dims_, i, j, k);
    need(at, i, j, k, compute);
    const float* value = &values_[3 * at];
    return {value[0], value[1], value[2]};
  }

  /// Trilinear light at points in cells / scale, black outside of [0, n - 1] and for NaN. Needs 2
  /// cells on each axis.
  template <class Compute>
  void linear(Colors& light, const Points& points, double scale, const Compute& compute) {
    const LightKernels& kernels = light_kernels();
    const KernelLight grid{values_.get(), dims_[0], dims_[1], dims_[2]};
    LightPlaces places;
    kernels.find(places, grid, scale, points.x, points.y, points.z);
    for (int n = 0; n < points.n; ++n)
      if (places.inside[n]) need_corners(places.lower[n], compute);
    float* const to[3] = {light.c[0], light.c[1], light.c[2]};
    kernels.linear(to, grid, places);
  }

 private:
  enum State : std::uint8_t {
    kTaken = 1,    // a thread stores the cell
    kKnown = 2,    // the cell is stored
    kCorners = 4,  // so are all corners of the cube of which this cell is the lower one
  };

  bool has(std::size_t at, State state) const {
    return state_[at].load(std::memory_order_acquire) & state;
  }
  void set(std::size_t at, State state) { state_[at].fetch_or(state, std::memory_order_release); }

  template <class Compute>
  void need(std::size_t at, int i, int j, int k, const Compute& compute) {
    if (has(at, kKnown)) return;
    const Color value = compute(i, j, k);
    if (!(state_[at].fetch_or(kTaken, std::memory_order_relaxed) & kTaken)) {
      for (int c = 0; c < 3; ++c) values_[3 * at + c] = value[c];
      set(at, kKnown);
    }
    while (!has(at, kKnown)) std::this_thread::yield();  // the other thread is storing it just now
  }

  template <class Compute>
  void need_corners(std::size_t lower, const Compute& compute) {
    if (has(lower, kCorners)) return;
    const auto row = static_cast<std::size_t>(dims_[0]), plane = row * dims_[1];
    const int i = lower % row, j = lower % plane / row, k = lower / plane;
    for (int n = 0; n < 8; ++n) {
      const int a = n & 1, b = n >> 1 & 1, c = n >> 2;
      need(lower + a + row * b + plane * c, i + a, j + b, k + c, compute);
    }
    set(lower, kCorners);
  }

  struct Free {
    void operator()(void* p) const { std::free(p); }
  };
  template <class T>
  using Zeros = std::unique_ptr<T[], Free>;

  Vec3i dims_;
  Zeros<float> values_;
  Zeros<std::atomic<std::uint8_t>> state_;
};

}  // namespace nbx
