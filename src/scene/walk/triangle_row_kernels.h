// The inner loop of a triangle's scan: the squared distances of a run of cells. Compiled once per
// instruction set (util/isa.h).
#pragma once

namespace nbx {

/// Cells that follow one another along x. See triangle_scan.h for the functions.
struct TriangleRun {
  static constexpr int kCells = 8;
  enum Function { kD, kA0, kA1, kA2, kB0, kB1, kB2, kFunctions };

  double v[kFunctions];         // at the first cell; afterwards at the cell behind the run
  double gradient[kFunctions];  // from cell to cell
  double x;                     // of the first cell
  double corner[3][3];          // of each corner: its x, and y and z from there to the cells
  double d[kCells], q[kCells];  // results: d, and the squared distance
};

struct TriangleRowKernels {
  void (*square_distances)(TriangleRun& run);
};

const TriangleRowKernels& triangle_row_kernels();

}  // namespace nbx
