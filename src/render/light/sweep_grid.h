// Radiative transfer by ray bundles: light that runs along fixed straight rays, plane by plane
// through a grid, and is caught by what it passes.
//
// The six faces of the grid send out D x D directions each, spaced evenly in angle over a pyramid
// of 90 degrees, so that together they cover the sphere. All rays of a direction are one another's
// shifts by whole cells; one traced stencil serves a plane. A ray that leaves sideways comes in on
// the other side as a new one, without light.
//
// The scheme is a discrete-ordinates sweep with exact transfer across a cell; cf. S. Chandrasekhar,
// Radiative Transfer (1950), for the discretization in directions.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "render/shade/field3.h"

namespace nbx {

/// What fills the cells of the grid, per meter: the extinction, and the share of it in each color
/// that is caught and sent out again.
struct SweepMedium {
  struct Cell {
    float extinction = 0;
    Color scattering{0, 0, 0};
  };
  Vec3i dims{0, 0, 0};
  std::vector<Cell> cells;  // laid out as Field3 is
};

struct SweepDirection {
  /// A piece of the ray within the plane's slab. Cells count from the ray's own; on the main axis
  /// they are the plane's.
  struct Segment {
    Vec3i cell{0, 0, 0};
    double length = 0;  // meters; 0: unused
  };
  Vec3d direction{0, 0, 0};  // unit vector
  std::array<Segment, 3> stencil;
  // Of the rays that start in the face's cells:
  std::array<std::vector<float>, 3> light;
  std::vector<std::int32_t> generation;
};

class SweepGrid {
 public:
  /// `cell_length` in meters, above 0; `directions_per_side` at least 1.
  SweepGrid(const Vec3i& dims, int directions_per_side, double cell_length);

  /// One sweep from each face: adds to `gathered` what the cells catch of the light that `source`
  /// (emission per meter) sends out. `plane_done(planes, of)` is called on this thread after each
  /// plane of a face and stops the sweep by false, which is then the result.
  /// Same bits for any number of threads; `threads` below 1 means all.
  bool sweep(Field3& gathered, const Field3& source, const SweepMedium& medium, int threads,
             const std::function<bool(int, int)>& plane_done);

  /// 1 / (6 D^2 h): the share of a ray's catch that a cell sends out again, per meter.
  double gather_factor() const;

 private:
  void start_face(int face);
  void trace_stencil(SweepDirection& ray) const;
  void load_rows(const Field3& source, const SweepMedium& medium);
  void sweep_plane();
  void cross_row(int segment, int row);
  void store_rows(Field3& gathered) const;
  std::size_t row_start(int row) const;

  Vec3i dims_;
  int directions_per_side_;
  double cell_length_;
  std::vector<SweepDirection> directions_;
  int face_ = 0, plane_ = 0;
  int main_axis_ = 0, lateral_axis1_ = 1, lateral_axis2_ = 2;
  int lateral_dim1_ = 0, lateral_dim2_ = 0;
  std::array<std::size_t, 3> strides_;  // from cell to cell along the axes
  /// The plane's cells, row by row along the first lateral axis: extinction, scattering, source and
  /// catch in turn, `stride` floats each.
  std::vector<float> rows_;
  std::vector<char> fogged_;  // by row: it has cells with extinction or scattering
};

}  // namespace nbx
