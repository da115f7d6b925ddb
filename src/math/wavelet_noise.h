// Band-limited noise, for detail that the grid can't represent. After R. L. Cook and T. DeRose,
// "Wavelet noise", ACM Transactions on Graphics 24(3), 2005: a periodic tile of Gaussian numbers
// without its low band holds the coefficients of quadratic B-splines, and bands of doubled
// frequency add up to a fractal sum. The tile also changes with time, by blending tiles of
// successive whole times.
//
// All results are the same for any number of threads.
#pragma once

#include <random>
#include <vector>

#include "math/mfield.h"
#include "math/noise/noise_params.h"

namespace nbx {

/// The generator and its tiles, which the first advance_tile creates. Only advance_tile and
/// restore_noise change it; any number of threads may call everything else. Noise without a tile is
/// 0.
struct WaveletNoise {
  std::mt19937 rng;                 // with the engine's own default seed
  Field<float> tile_a;              // the tile of time tile_time
  Field<float> tile_b;              // the tile of time tile_time + 1
  Field<float> tile;                // the blend that is evaluated
  int tile_time = 0;                // a whole time
  int tile_size = 64;               // edge of the tile: a power of two from 4 on
  std::mt19937 before_a, before_b;  // the generator as it was before it drew each tile
};

/// What is needed to restore noise: its tiles are drawn again from the generator as it was before
/// them. Counting the numbers drawn so far wouldn't work, since noise that changes faster than the
/// substeps skips billions of numbers in each substep.
struct NoiseState {
  std::mt19937 rng, before_a, before_b;
  int tile_time = 0;
  bool has_tiles = false;
  bool operator==(const NoiseState&) const = default;
};
NoiseState noise_state(const WaveletNoise& noise);
/// Brings `noise` to that state. `three_d` and `normalize` must be those of the original noise.
/// Throws std::bad_alloc, after a log line.
void restore_noise(WaveletNoise& noise, const NoiseState& state, bool three_d, bool normalize);

/// Sets `noise.tile` to the tile of time |t|. A step to the next or previous whole time draws one
/// new tile; any other jump draws two and skips the numbers of the tiles before, up to some
/// thousands of tiles. `three_d` and `normalize` are those of generate_tile, the same in every
/// call. Throws std::bad_alloc, after a log line.
void advance_tile(WaveletNoise& noise, float t, bool three_d, bool normalize);

/// The same, but the tile depends only on the time: whatever times came before, it is the tile of a
/// noise that advanced tile by tile from time 0. A step back, or a jump, draws the tiles in
/// between. The noise repeats after 8192 tiles.
void advance_tile_from_start(WaveletNoise& noise, float t, bool three_d, bool normalize);

/// One sample at p, in cells of the periodic tile. `derivative` 0 is the noise, 1 to 3 its slope
/// against x, y, z, which is minus the partial derivative. Order of the sums: z, y, x.
float evaluate(const WaveletNoise& noise, const Vec3f& p, int derivative);

/// One band: field += amplitude * noise(((i, j, k) + offset) * frequency) in all cells, the ghost
/// layer included. The same bits as evaluate().
void noise_field(Field<float>& field, const WaveletNoise& noise, float frequency, float amplitude,
                 const Vec3f& offset);

/// All bands. The field is filled with 0 first, or added to.
void fractal3D_field(Field<float>& field, const WaveletNoise& noise, const NoiseParams& params,
                     bool zero_first);
void m_fractal3D_field(MField& field, const WaveletNoise& noise, const NoiseParams& params,
                       bool zero_first);

/// All bands at one point, in voxels; derivative as for evaluate(), with respect to noise cells.
float fractal3D(const WaveletNoise& noise, const NoiseParams& params, const Vec3f& p,
                int derivative);

/// One band of the sum: the noise at `frequency` times the position, times `amplitude`.
struct NoiseBand {
  float frequency, amplitude;
};
/// All bands of the sum, in its order.
std::vector<NoiseBand> noise_bands(const NoiseParams& params);

/// The tile for kernels that evaluate it at any points (math/lanes/noise_lanes.h): each row is
/// followed by its first cells, so that a read of four cells may begin anywhere.
struct NoiseRows {
  const float* data;
  int edge;   // of the tile, a power of two
  int pitch;  // from one row to the next
};
/// Fills `storage` with the rows of a tile that isn't empty.
NoiseRows noise_rows(Field<float>& storage, const WaveletNoise& noise);

}  // namespace nbx
