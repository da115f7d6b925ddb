#include "simulation/upres/upres_detail.h"

#include <algorithm>
#include <cmath>

#include <omp.h>

#include "math/field_operators.h"
#include "simulation/fluid/curl_noise.h"
#include "simulation/fluid_tools3d.h"
#include "simulation/upres/detail_kernels.h"
#include "simulation/vorticity.h"
#include "util/isa.h"

NBX_DECLARE_ISA(DetailKernels, kDetailKernels)

namespace nbx {

const DetailKernels& detail_kernels() { return NBX_SELECT_ISA(kDetailKernels); }

namespace {

/// The places of fine cells 1 .. n in the coarse grid, along one axis: cell 1 begins where coarse
/// cell 1 does, as in scale_up_center.
struct AxisPlaces {
  std::vector<int> at;
  std::vector<float> t;

  AxisPlaces(int n, int factor) {
    const float s = 1 / static_cast<float>(factor), first = s * 0.5f - 0.5f + 1;
    for (int i = 0; i < n; ++i) {
      const float x = static_cast<float>(i) * s + first;
      at.push_back(static_cast<int>(x));
      t.push_back(x - static_cast<float>(at.back()));
    }
  }
};

/// |w| of the coarse gas, limited to one radian a frame.
FieldHandle swirl(const LowFrame& low, double low_dx, double frame_length) {
  const FieldHandle wx = acquire_field(low.dims()), wy = acquire_field(low.dims()),
                    wz = acquire_field(low.dims());
  FieldHandle magnitude = acquire_field(low.dims());
  const auto& [U, V, W] = low.velocity;
  VelocityCurl(*wx, *wy, *wz, *magnitude, *U, *V, *W, static_cast<float>(low_dx));
  min_a_x(*magnitude, static_cast<float>(1 / frame_length), *magnitude);
  return magnitude;
}

/// Coarse rows of four fields at the place of a fine row; one per thread.
class BlendedRows {
 public:
  explicit BlendedRows(int n) : n_(n), pitch_(n + 16), rows_(4 * pitch_) {}
  const float* blend(int which, const Field<float>& f, int j, int k, float ty, float tz) {
    float* const row = rows_.data() + which * pitch_;
    detail_kernels().blend(
        row, {&f(0, j, k), &f(0, j + 1, k), &f(0, j, k + 1), &f(0, j + 1, k + 1), ty, tz}, n_);
    return row;
  }

 private:
  int n_, pitch_;
  std::vector<float> rows_;
};

}  // namespace

NoiseParams upres_noise(const SolverParams& params) {
  NoiseParams noise;
  const double f = params.upres_factor;
  const double q = std::exp2(-params.upres_extra_bands);
  noise.bands = static_cast<float>(static_cast<int>(std::log2(f)) + params.upres_extra_bands);
  noise.frequency = static_cast<float>(q);
  noise.amplitude = static_cast<float>(params.upres_noise_amount / (q / f));
  noise.persistence = static_cast<float>(params.upres_noise_persistence);
  return noise;
}

// Its largest magnitude is 1, so that the amount alone says how strong the detail is.
void UpresDetail::make_tile() {
  if (tile_.data) return;
  advance_tile(noise_, 0, true, true);
  tile_ = noise_rows(rows_, noise_);
}

void UpresDetail::add(std::array<MField, 3>& velocity, const LowFrame& low, TextureCoordinates& tex,
                      const SolverParams& params, double low_dx, double frame_length) {
  make_tile();
  const int f = params.upres_factor;
  const Vec3i cells = low.box.size() * f, dims = cells + Vec3i(2, 2, 2);
  const FieldHandle coarse_map = swirl(low, low_dx, frame_length);
  const FieldHandle map = acquire_field(dims), psi = acquire_field(dims);
  const std::vector<NoiseBand> bands = noise_bands(upres_noise(params));
  const Field<float>& x = tex.tex_x.read_cpu();
  const Field<float>& y = tex.tex_y.read_cpu();
  const Field<float>& z = tex.tex_z.read_cpu();
  const AxisPlaces along_x(cells[0], f), along_y(cells[1], f), along_z(cells[2], f);
  const RowPlaces places{along_x.at.data(), along_x.t.data(), cells[0]};
  std::vector<BlendedRows> scratch(omp_get_max_threads(), BlendedRows(x.nx()));

#pragma omp parallel for schedule(static)
  for (int k = 0; k < cells[2]; ++k)
    for (int j = 0; j < cells[1]; ++j) {
      BlendedRows& rows = scratch[omp_get_thread_num()];
      const auto blend = [&](int which, const Field<float>& field) {
        return rows.blend(which, field, along_y.at[j], along_z.at[k], along_y.t[j], along_z.t[k]);
      };
      const float* const coordinates[3] = {blend(0, x), blend(1, y), blend(2, z)};
      detail_kernels().noise(&(*psi)(1, j + 1, k + 1), coordinates, places, tile_, bands.data(),
                             static_cast<int>(bands.size()));
      detail_kernels().refine(&(*map)(1, j + 1, k + 1), blend(3, *coarse_map), places);
    }
  clamp_border(*psi);
  set_border(*map, 0);
  add_curl_of_scaled(velocity[0].write_cpu(), velocity[1].write_cpu(), velocity[2].write_cpu(),
                     *psi, map.get(), 1);
}

}  // namespace nbx
