#include "C4D/volume_texture.h"

#include <exception>

#include "C4D/parameter_reader.h"
#include "C4D/volume_tag.h"
#include "host/interface/texture.h"

namespace nbx {

namespace {

constexpr double kMetresPerUnit = 0.01;

void scale(const SparseBlockEntry& block, const host::Texture& texture, double time, double edge) {
  float* weight = block.data;
  for (int z = 0; z < 8; ++z)
    for (int y = 0; y < 8; ++y)
      for (int x = 0; x < 8; ++x, ++weight) {
        if (*weight == 0) continue;
        const host::Vector at{(block.x + x) * edge, (block.y + y) * edge, (block.z + z) * edge};
        *weight *= static_cast<float>(host::Brightness(texture.Sample(at, time)));
      }
}

}  // namespace

void scale_by_texture(SparseField<float, 3>& weights, const host::BaseTag& tag, double time,
                      double voxel_size) {
  const auto* shader =
      dynamic_cast<const host::BaseShader*>(ParameterReader(tag).link(TVOLUME_SHADER));
  if (!shader) return;
  const host::Texture& texture = *shader->GetTexture();
  const auto blocks = static_cast<std::ptrdiff_t>(weights.blocks().size());
  std::exception_ptr failure;
#pragma omp parallel for schedule(dynamic, 1)
  for (std::ptrdiff_t i = 0; i < blocks; ++i) {
    try {
      scale(weights.blocks()[static_cast<std::size_t>(i)], texture, time,
            voxel_size * kMetresPerUnit);
    } catch (...) {
#pragma omp critical(scale_by_texture_failure)
      failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace nbx
