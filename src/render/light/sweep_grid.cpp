#include "render/light/sweep_grid.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <numbers>

#include <omp.h>

#include "render/light/sweep_kernels.h"
#include "util/isa.h"

NBX_DECLARE_ISA(SweepKernels, kSweepKernels)

namespace nbx {

const SweepKernels& sweep_kernels() { return NBX_SELECT_ISA(kSweepKernels); }

namespace {

constexpr int kValues = 10;  // floats of a cell in a plane's rows

struct Wrapped {
  int quotient, remainder;  // of a floor division
};

Wrapped wrap(int a, int n) {
  const int r = a % n;
  return r < 0 ? Wrapped{a / n - 1, r + n} : Wrapped{a / n, r};
}

}  // namespace

SweepGrid::SweepGrid(const Vec3i& dims, int directions_per_side, double cell_length)
    : dims_(dims),
      directions_per_side_(directions_per_side),
      cell_length_(cell_length),
      directions_(static_cast<std::size_t>(directions_per_side) *
                  static_cast<std::size_t>(directions_per_side)),
      strides_{1, static_cast<std::size_t>(dims[0]),
               static_cast<std::size_t>(dims[0]) * static_cast<std::size_t>(dims[1])} {}

double SweepGrid::gather_factor() const {
  return 1 / (6 * static_cast<double>(directions_.size()) * cell_length_);
}

bool SweepGrid::sweep(Field3& gathered, const Field3& source, const SweepMedium& medium,
                      int threads, const std::function<bool(int, int)>& plane_done) {
  if (threads < 1) threads = omp_get_max_threads();
  for (int face = 0; face < 6; ++face) {
    start_face(face);
    const int planes = dims_[main_axis_];
    for (int plane = 0; plane < planes; ++plane) {
      plane_ = face < 3 ? plane : planes - 1 - plane;
      for (SweepDirection& ray : directions_) trace_stencil(ray);
#pragma omp parallel num_threads(threads)
      {
        load_rows(source, medium);
        sweep_plane();
        store_rows(gathered);
      }
      if (!plane_done(plane + 1, planes)) return false;
    }
  }
  return true;
}

void SweepGrid::start_face(int face) {
  face_ = face;
  main_axis_ = face % 3;
  lateral_axis1_ = main_axis_ == 0 ? 1 : 0;
  lateral_axis2_ = main_axis_ == 2 ? 1 : 2;
  lateral_dim1_ = dims_[lateral_axis1_];
  lateral_dim2_ = dims_[lateral_axis2_];
  const auto cells =
      static_cast<std::size_t>(lateral_dim1_) * static_cast<std::size_t>(lateral_dim2_);
  rows_.resize(cells * kValues);
  fogged_.resize(lateral_dim2_);

  const int d = directions_per_side_;
  for (int n = 0; n < d * d; ++n) {
    const double alpha = (2 * (n / d + 0.5) / d - 1) * std::numbers::pi / 4;
    const double beta = (2 * (n % d + 0.5) / d - 1) * std::numbers::pi / 4;
    const double a = std::sin(beta) * std::cos(alpha);
    const double b = std::sin(alpha) * std::cos(beta);
    const double c = std::sqrt(1 - a * a - b * b);
    SweepDirection& ray = directions_[n];
    ray.direction = {a, b, face < 3 ? c : -c};
    std::swap(ray.direction[2], ray.direction[main_axis_]);
    for (auto& light : ray.light) light.assign(cells, 0.0f);
    ray.generation.assign(cells, 0);
  }
}

// A walk through the cells of one slab: the crossings with the next cell walls, in their order.
void SweepGrid::trace_stencil(SweepDirection& ray) const {
  const int slab = face_ < 3 ? plane_ : dims_[main_axis_] - 1 - plane_;
  const double start = slab / std::abs(ray.direction[main_axis_]);
  Vec3i cell{0, 0, 0};
  Vec3d crossing{0, 0, 0};
  std::array<int, 3> order{0, 1, 2};
  for (int axis = 0; axis < 3; ++axis) {
    const double origin =
        axis != main_axis_ ? 0.5 : (face_ < 3 ? 0.0 : static_cast<double>(dims_[main_axis_]));
    const double d = ray.direction[axis];
    const double x = origin + start * d;
    if (d >= 0) {
      crossing[axis] = d > 0 ? start + (std::floor(x + 1.000001) - x) / d
                             : std::numeric_limits<double>::infinity();
      cell[axis] = static_cast<int>(std::floor(x + 1e-6));
    } else {
      crossing[axis] = start + (std::ceil(x - 1.000001) - x) / d;
      cell[axis] = static_cast<int>(std::floor(x - 1e-6));
    }
  }
  std::sort(order.begin(), order.end(), [&](int a, int b) { return crossing[a] < crossing[b]; });

  double last = start;
  int next = 0;
  for (auto& segment : ray.stencil) {
    segment = {};
    if (next > 2 || !(crossing[main_axis_] > last)) continue;
    const int axis = order[next++];
    segment = {cell, (crossing[axis] - last) * cell_length_};
    last = crossing[axis];
    cell[axis] += ray.direction[axis] < 0 ? -1 : 1;
  }
}

std::size_t SweepGrid::row_start(int row) const {
  return static_cast<std::size_t>(plane_) * strides_[main_axis_] +
         static_cast<std::size_t>(row) * strides_[lateral_axis2_];
}

void SweepGrid::load_rows(const Field3& source, const SweepMedium& medium) {
  const auto n = static_cast<std::size_t>(lateral_dim1_);
  const std::size_t step = strides_[lateral_axis1_];
#pragma omp for schedule(static)
  for (int r = 0; r < lateral_dim2_; ++r) {
    float* row = rows_.data() + static_cast<std::size_t>(r) * n * kValues;
    std::fill(row + 7 * n, row + 10 * n, 0.0f);
    bool fogged = false;
    std::size_t at = row_start(r);
    for (std::size_t i = 0; i < n; ++i, at += step) {
      const SweepMedium::Cell& cell = medium.cells[at];
      const float* emitted = source.cell(at);
      row[i] = cell.extinction;
      for (std::size_t c = 0; c < 3; ++c) {
        row[(1 + c) * n + i] = cell.scattering[c];
        row[(4 + c) * n + i] = cell.extinction > 0 ? emitted[c] / cell.extinction : 0.0f;
        fogged = fogged || cell.scattering[c] > 0;
      }
      fogged = fogged || cell.extinction > 0;
    }
    fogged_[r] = fogged;
  }
}

// The segments of all rays one after the other, with a barrier in between: within one, each cell
// has rays of its own.
void SweepGrid::sweep_plane() {
  for (int segment = 0; segment < 3; ++segment) {
#pragma omp for schedule(dynamic, 1)
    for (int row = 0; row < lateral_dim2_; ++row) cross_row(segment, row);
  }
}

void SweepGrid::cross_row(int segment, int row) {
  const SweepKernels& kernels = sweep_kernels();
  const auto n = static_cast<std::size_t>(lateral_dim1_);
  float* values = rows_.data() + static_cast<std::size_t>(row) * n * kValues;
  for (SweepDirection& ray : directions_) {
    const SweepDirection::Segment& piece = ray.stencil[segment];
    if (piece.length == 0) continue;
    const auto [q2, r2] = wrap(row - piece.cell[lateral_axis2_], lateral_dim2_);
    // The row's cells see the rays in two runs, before and after the one that wraps round.
    for (int first = 0; first < lateral_dim1_;) {
      const auto [q1, r1] = wrap(first - piece.cell[lateral_axis1_], lateral_dim1_);
      const int count = std::min(lateral_dim1_ - first, lateral_dim1_ - r1);
      const auto at = static_cast<std::size_t>(r2) * n + static_cast<std::size_t>(r1);
      const SweepRays rays{
          {ray.light[0].data() + at, ray.light[1].data() + at, ray.light[2].data() + at},
          ray.generation.data() + at};
      kernels.restart(rays, std::abs(q1) + std::abs(q2), count);
      if (fogged_[row]) {
        float* v = values + first;
        const SweepCells cells{v,
                               {v + n, v + 2 * n, v + 3 * n},
                               {v + 4 * n, v + 5 * n, v + 6 * n},
                               {v + 7 * n, v + 8 * n, v + 9 * n}};
        kernels.cross(cells, rays, static_cast<float>(piece.length), count);
      }
      first += count;
    }
  }
}

void SweepGrid::store_rows(Field3& gathered) const {
  const auto n = static_cast<std::size_t>(lateral_dim1_);
  const std::size_t step = strides_[lateral_axis1_];
#pragma omp for schedule(static)
  for (int r = 0; r < lateral_dim2_; ++r) {
    if (!fogged_[r]) continue;
    const float* caught = rows_.data() + static_cast<std::size_t>(r) * n * kValues + 7 * n;
    std::size_t at = row_start(r);
    for (std::size_t i = 0; i < n; ++i, at += step) {
      float* sum = gathered.cell(at);
      for (std::size_t c = 0; c < 3; ++c) sum[c] += caught[c * n + i];
    }
  }
}

}  // namespace nbx
