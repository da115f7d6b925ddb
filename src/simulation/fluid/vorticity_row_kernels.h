// The inner loops of vorticity confinement and curl noise, each over one row of cells. Compiled
// once per instruction set (util/isa.h).
#pragma once

#include <cstddef>

namespace nbx {

/// Steps in a field to the next row and to the next plane.
struct RowSteps {
  std::ptrdiff_t y, z;
};

/// The faces of the first cell of a row: pointers into U, V, W with their steps.
struct FaceRow {
  const float *u, *v, *w;
  RowSteps su, sv, sw;
};

/// Potentials of the faces of a row, mirrored: x(l), y(l), z(l) at cell l are x[-l], y[l], z[l].
/// "north" is one row and "high" one plane further.
struct PotentialRow {
  const float *x, *x_north, *x_high;
  const float *y, *y_high;
  const float *z, *z_north;
  const float* map;  // what scales the potentials, at the first cell
  RowSteps steps;    // of the map
};

/// `n` is the number of cells.
struct VorticityRowKernels {
  /// (wx, wy, wz) = curl u at cell centers, s = 1 / (2 dx), and mag = |w|
  void (*curl)(float* wx, float* wy, float* wz, float* mag, const FaceRow& faces, float s, int n);
  /// w = (N x w) scale, N = the direction of grad mag
  void (*confine)(float* wx, float* wy, float* wz, const float* mag, const RowSteps& steps,
                  float scale, int n);
  /// u += (f + f_before) c
  void (*add_force)(float* u, const float* f, const float* f_before, float c, int n);
  /// (u, v, w) += curl of the potentials, times scale
  void (*add_curl)(float* u, float* v, float* w, const PotentialRow& psi, float scale, int n);
  /// The same with each potential times the mean of the map around its edge
  void (*add_mapped_curl)(float* u, float* v, float* w, const PotentialRow& psi, float scale,
                          int n);
};

const VorticityRowKernels& vorticity_row_kernels();

}  // namespace nbx
