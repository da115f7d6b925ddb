#include "render/volume_renderer.h"

#include <algorithm>
#include <cmath>

#include "render/march/march.h"

namespace nbx {

namespace {

// Renders with at most this many volumes allocate nothing per ray.
constexpr std::size_t kFew = 4;

class EntryList {
 public:
  EntryList(const VolumeRenderer& renderer, const RayRecord& ray) {
    if (renderer.volumes.size() > kFew) {
      many_.resize(renderer.volumes.size());
      entries_ = many_.data();
    }
    for (const auto& volume : renderer.volumes) {
      const std::uint32_t excluded =
          ray.mask & kLightQueryRay ? volume->innerExcludeMask : volume->excludeMask;
      if (volume->ready && !(excluded & ray.mask) && clipRay(entries_[count_], *volume, ray))
        ++count_;
    }
  }
  std::span<VolumeEntry> entries() { return {entries_, count_}; }

 private:
  VolumeEntry few_[kFew];
  std::vector<VolumeEntry> many_;
  VolumeEntry* entries_ = few_;
  std::size_t count_ = 0;
};

// Marches from each entrance or exit to the next. In between the set of active volumes is constant.
template <class Stretch>
bool trace(const VolumeRenderer& renderer, RayRecord& ray, Stretch stretch) {
  if (!renderer.active) return false;
  EntryList list(renderer, ray);
  const std::span<VolumeEntry> entries = list.entries();
  if (entries.empty()) return false;

  March march(renderer, ray, entries);
  for (double last = -HUGE_VAL;;) {
    double next = HUGE_VAL;
    bool open = false;
    for (VolumeEntry& entry : entries) {
      entry.active = entry.tEnter <= last && entry.tExit > last;
      open = open || entry.active;
      if (entry.tEnter > last) next = std::min(next, entry.tEnter);
      if (entry.tExit > last) next = std::min(next, entry.tExit);
    }
    if (next == HUGE_VAL) break;
    if (open && !stretch(march, last, next)) break;
    last = next;
  }
  march.finish();
  return true;
}

}  // namespace

bool traceVolumes(const VolumeRenderer& renderer, RayRecord& ray) {
  return trace(renderer, ray, [](March& march, double a, double b) { return march.view(a, b); });
}

bool traceShadow(const VolumeRenderer& renderer, RayRecord& ray) {
  return trace(renderer, ray, [](March& march, double a, double b) { return march.shadow(a, b); });
}

void RenderVolume::release_frame() {
  ready = false;
  for (VolumeShader* shader : {&smoke, &fire}) {
    shader->color_sampler.field = nullptr;
    shader->density_sampler.field = nullptr;
  }
  velU = velV = velW = proximity = vorticityMask = nullptr;
  near = {};
  advectedCoords = {};
  light_field = nullptr;
}

}  // namespace nbx
