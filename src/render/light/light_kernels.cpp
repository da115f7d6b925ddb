#include "render/light/light_kernels.h"

#include "math/lanes/lane_gather.h"

namespace nbx::NBX_ISA {

namespace {

constexpr int kCount = LightPlaces::kCount;

void find_axis(float* fraction, std::int32_t* lower, std::int32_t* inside, const float* a,
               double scale, int n) {
  const double last = n - 1;
  for (int i = 0; i < kCount; ++i) {
    const double p = a[i] * scale;
    const bool in = (p >= 0) & (p <= last);
    const double q = in ? p : 0;
    const auto whole = static_cast<std::int32_t>(q);
    const std::int32_t cell = whole < n - 2 ? whole : n - 2;
    lower[i] = cell;
    fraction[i] = static_cast<float>(q - cell);
    inside[i] &= in ? -1 : 0;
  }
}

NBX_FLATTEN void find(LightPlaces& places, const KernelLight& grid, double scale, const float* x,
                      const float* y, const float* z) {
  alignas(64) std::int32_t i[kCount], j[kCount], k[kCount], inside[kCount];
  for (std::int32_t& in : inside) in = -1;
  find_axis(places.fraction[0], i, inside, x, scale, grid.nx);
  find_axis(places.fraction[1], j, inside, y, scale, grid.ny);
  find_axis(places.fraction[2], k, inside, z, scale, grid.nz);
  const auto nx = static_cast<std::uint32_t>(grid.nx), ny = static_cast<std::uint32_t>(grid.ny);
  for (int n = 0; n < kCount; ++n) {
    const std::uint32_t at = i[n] + nx * (j[n] + ny * k[n]);
    places.lower[n] = inside[n] ? at : 0;
    places.inside[n] = inside[n];
  }
}

struct Light {
  F c[3];
};

// The fourth float belongs to the next cell and isn't used. Another thread may be storing it, which
// does no harm, but the thread sanitizer would report it.
#ifdef __SANITIZE_THREAD__
constexpr std::size_t kRead = 3 * sizeof(float);
#else
constexpr std::size_t kRead = 4 * sizeof(float);
#endif

// The cells at `data` + 3 lower.
Light gather_cells(const float* data, const std::uint32_t* lower) {
  F row[4];
  for (int r = 0; r < 4; ++r) {
    F4 group[W / 4]{};
    for (int g = 0; g < W / 4; ++g)
      std::memcpy(&group[g], data + std::size_t{3} * lower[4 * g + r], kRead);
    row[r] = join(group);
  }
  const F ab01 = pick<0, 4, 1, 5>(row[0], row[1]), c01 = pick<2, 6, 2, 6>(row[0], row[1]);
  const F ab23 = pick<0, 4, 1, 5>(row[2], row[3]), c23 = pick<2, 6, 2, 6>(row[2], row[3]);
  return {{pick<0, 1, 4, 5>(ab01, ab23), pick<2, 3, 6, 7>(ab01, ab23), pick<0, 1, 4, 5>(c01, c23)}};
}

// Sums over the corners one after the other, x fastest.
NBX_FLATTEN void linear(float* const* out, const KernelLight& grid, const LightPlaces& places) {
  const std::size_t row = std::size_t{3} * grid.nx, plane = row * grid.ny;
  for (int at = 0; at < kCount; at += W) {
    const F x = load(places.fraction[0] + at, Full()), y = load(places.fraction[1] + at, Full()),
            z = load(places.fraction[2] + at, Full());
    const F weight[3][2] = {{1.0f - x, x}, {1.0f - y, y}, {1.0f - z, z}};
    Light sum{};
    for (int corner = 0; corner < 8; ++corner) {
      const int i = corner & 1, j = corner >> 1 & 1, k = corner >> 2;
      const F share = weight[0][i] * weight[1][j] * weight[2][k];
      const Light v = gather_cells(grid.data + 3 * i + row * j + plane * k, places.lower + at);
      for (int c = 0; c < 3; ++c) sum.c[c] += share * v.c[c];
    }
    I inside;
    std::memcpy(&inside, places.inside + at, sizeof inside);
    for (int c = 0; c < 3; ++c) store(out[c] + at, select(inside, sum.c[c], F{}), Full());
  }
}

}  // namespace

extern const LightKernels kLightKernels;
const LightKernels kLightKernels{find, linear};

}  // namespace nbx::NBX_ISA
