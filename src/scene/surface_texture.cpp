#include "scene/surface_texture.h"

namespace nbx {

namespace {

/// The coordinate in the picture, in [0, 1).
double placed(double u, double offset, double size, bool mirrored) {
  u = (u - offset) / (size != 0 ? size : 1);
  if (!std::isfinite(u)) return 0;
  if (mirrored) u = std::abs(u);
  return u - std::floor(u);
}

/// Two texels side by side and the share of the second.
struct Pair {
  std::size_t first, second;
  double share;
};

Pair texels_at(double u, int n) {
  const double at = u * n - 0.5, low = std::floor(at);
  const int i = static_cast<int>(low);
  return {static_cast<std::size_t>((i + n) % n), static_cast<std::size_t>((i + 1) % n), at - low};
}

}  // namespace

float SurfaceTexture::value(const Vec3f& uvw) const {
  if (texels.empty()) return 1;
  const Pair u = texels_at(placed(uvw[0], offset[0], size[0], mirrored), width);
  const Pair v = texels_at(placed(uvw[1], offset[1], size[1], mirrored), height);
  const auto row = [&](std::size_t j) {
    const float* line = texels.data() + j * static_cast<std::size_t>(width);
    return line[u.first] * (1 - u.share) + line[u.second] * u.share;
  };
  return static_cast<float>(row(v.first) * (1 - v.share) + row(v.second) * v.share);
}

}  // namespace nbx
