#include "C4D/sources/volume_texture.h"

#include <exception>
#include <memory>
#include <utility>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_tag_parameters.h"
#include "host/interface/texture.h"
#include "util/units.h"

namespace nbx {

namespace {

class Shader final : public VolumeTexture {
 public:
  Shader(std::shared_ptr<const host::Texture> texture, double time, double edge)
      : texture_(std::move(texture)), time_(time), edge_(edge) {}

  float value(const Vec3i& cell) const override {
    const host::Vector at{cell[0] * edge_, cell[1] * edge_, cell[2] * edge_};
    return static_cast<float>(host::Brightness(texture_->Sample(at, time_)));
  }

 private:
  const std::shared_ptr<const host::Texture> texture_;
  const double time_, edge_;  // seconds, and the edge of a cell in meters
};

void scale(const SparseBlockEntry& block, const VolumeTexture& texture) {
  float* weight = block.data;
  for (int z = 0; z < 8; ++z)
    for (int y = 0; y < 8; ++y)
      for (int x = 0; x < 8; ++x, ++weight)
        if (*weight != 0) *weight *= texture.value(Vec3i(block.x + x, block.y + y, block.z + z));
}

}  // namespace

std::unique_ptr<const VolumeTexture> volume_texture(const host::BaseTag& tag, double time,
                                                    double voxel_size) {
  const auto* shader = dynamic_cast<const host::BaseShader*>(ParameterReader(tag)(TVOLUME.SHADER));
  if (!shader) return nullptr;
  return std::make_unique<Shader>(shader->GetTexture(), time, voxel_size * kMetersPerUnit);
}

void scale_by_texture(SparseField<float, 3>& weights, const VolumeTexture& texture) {
  const std::ptrdiff_t blocks = weights.blocks().size();
  std::exception_ptr failure;
#pragma omp parallel for schedule(dynamic, 1)
  for (std::ptrdiff_t i = 0; i < blocks; ++i) {
    try {
      scale(weights.blocks()[i], texture);
    } catch (...) {
#pragma omp critical(scale_by_texture_failure)
      failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace nbx
