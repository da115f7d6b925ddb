#include "render/light/lazy_light.h"

#include <new>

#include "util/isa.h"

NBX_DECLARE_ISA(LightKernels, kLightKernels)

namespace nbx {

const LightKernels& light_kernels() { return NBX_SELECT_ISA(kLightKernels); }

namespace {

// The system gives out large zeroed blocks page by page, as they are touched.
template <class T>
T* zeros(std::size_t count) {
  void* const p = std::calloc(count, sizeof(T));
  if (!p) throw std::bad_alloc();
  return static_cast<T*>(p);
}

}  // namespace

static_assert(LightPlaces::kCount == kBlock);
static_assert(std::atomic<std::uint8_t>::is_always_lock_free);

LazyLight::LazyLight(const Vec3i& dims)
    : dims_(dims),
      values_(zeros<float>(3 * Field3::count(dims) + 1)),  // with the float that kernels read
      state_(zeros<std::atomic<std::uint8_t>>(Field3::count(dims))) {}

}  // namespace nbx
