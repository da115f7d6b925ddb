// The inner loops of the detail of an up-resolution run: rows of a coarse field on a finer grid,
// noise along them, and the search for distorted cells. Compiled once per instruction set
// (util/isa.h).
#pragma once

#include "math/wavelet_noise.h"

namespace nbx {

/// The four rows of a coarse field around a fine row, and the place between them.
struct RowsAround {
  const float *near, *north, *high, *high_north;
  float ty, tz;
};

/// Where the cells of a fine row lie in a coarse row: between cells at[i] and at[i] + 1.
struct RowPlaces {
  const int* at;
  const float* t;
  int n;
};

struct DetailKernels {
  /// dst[i] = the coarse row at the fine row's y and z, for n coarse cells.
  void (*blend)(float* dst, const RowsAround& rows, int n);
  /// dst[i] = a coarse row at the fine cells.
  void (*refine)(float* dst, const float* row, const RowPlaces& places);
  /// dst[i] = the sum of all bands of noise at the coordinates that the coarse rows give for the
  /// fine cells.
  void (*noise)(float* dst, const float* const (&rows)[3], const RowPlaces& places,
                const NoiseRows& tile, const NoiseBand* bands, int band_count);
  /// doubtful[i] = 0 for cells of three coordinates that are stretched and squeezed by less than
  /// `most`, else 1: no eigenvalue of the Jacobian J is further from 1 than the largest row sum of
  /// |J - 1| (Gershgorin). `y` and `z` are the steps to the next row and plane.
  void (*doubt)(float* doubtful, const float* const (&cells)[3], std::ptrdiff_t y, std::ptrdiff_t z,
                float most, int n);
};

const DetailKernels& detail_kernels();

}  // namespace nbx
