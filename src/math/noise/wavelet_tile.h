// The periodic tile of wavelet noise: white Gaussian noise minus the part that a grid of half the
// resolution can represent (Cook and DeRose, 2005).
#pragma once

#include "math/wavelet_noise.h"

namespace nbx {

/// A new tile from the next numbers of `noise.rng`. Its edge n is |size|, at least 4, raised to a
/// power of two; its dimensions are (n, n, n), or (n, n, 1) without `three_d`. `normalize` scales
/// it to a largest magnitude of 1. Throws std::bad_alloc, after a log line.
void generate_tile(Field<float>& out, WaveletNoise& noise, int size, bool three_d, bool normalize);

/// Removes the low band of `tile`, periodic with an edge of a power of two: along x and y, and
/// along z with `three_d` if the tile isn't flat. `tmp` is scratch.
void high_pass_wavelet(Field<float>& tile, Field<float>& tmp, bool three_d);

}  // namespace nbx
