// Wavelet noise (math/wavelet_noise.h) at a point of its own for each lane. For kernel files only
// (util/isa.h).
#pragma once

#include "math/lanes/lane_gather.h"
#include "math/wavelet_noise.h"

namespace nbx::NBX_ISA {

/// The B-spline weights along one axis, and the first of their three cells, wrapped.
struct NoiseAxis {
  I cell;
  F w[3];

  NoiseAxis(F p, int wrap) {
    const F q = p - 0.5f;
    I c = truncate(q);
    c -= to_float(c) < q;  // a mask is -1: rounds up
    const F t = to_float(c) - q, s = 1 - t;
    cell = (c - 1) & wrap;
    w[0] = 0.5f * t * t;
    w[2] = 0.5f * s * s;
    w[1] = 1 - w[0] - w[2];
  }
  F sum(F a, F b, F c) const { return (w[0] * a + w[1] * b) + w[2] * c; }
};

/// evaluate(noise, p, 0), with the same bits while |p| is below 1e9. Anything else reads some cell
/// of the tile.
inline F evaluate(const NoiseRows& tile, F px, F py, F pz) {
  const int wrap = tile.edge - 1;
  const NoiseAxis x(px, wrap), y(py, wrap), z(pz, wrap);
  F across[3][3];  // by row y, then by cell x
  for (int b = 0; b < 3; ++b) {
    const I plane = ((y.cell + b) & wrap) * tile.pitch + x.cell;
    Quad row[3];
    for (int c = 0; c < 3; ++c)
      row[c] = gather_quads(tile.data,
                            Indices(plane + ((z.cell + c) & wrap) * (tile.pitch * tile.edge)));
    across[b][0] = z.sum(row[0].a, row[1].a, row[2].a);
    across[b][1] = z.sum(row[0].b, row[1].b, row[2].b);
    across[b][2] = z.sum(row[0].c, row[1].c, row[2].c);
  }
  const auto along_y = [&](int a) { return y.sum(across[0][a], across[1][a], across[2][a]); };
  return x.sum(along_y(0), along_y(1), along_y(2));
}

}  // namespace nbx::NBX_ISA
