#include "render/light/sweep_grid.h"

#include <cstdlib>
#include <span>
#include <utility>

#include <omp.h>

#include "render/light/sweep_kernels.h"
#include "render/light/sweep_rays.h"
#include "util/isa.h"

NBX_DECLARE_ISA(SweepKernels, kSweepKernels)

namespace nbx {

const SweepKernels& sweep_kernels() { return NBX_SELECT_ISA(kSweepKernels); }

namespace {

// One row of a slab's cells, along the first lateral axis. See SweepCells for the values.
struct SweepRow {
  static constexpr int kArrays = 10;

  std::span<float> extinction;
  std::array<std::span<float>, 3> scattering, source, caught;

  // `memory` holds kArrays * count floats.
  SweepRow(float* memory, std::size_t count) {
    const auto take = [&] { return std::span(std::exchange(memory, memory + count), count); };
    extinction = take();
    for (auto* values : {&scattering, &source, &caught})
      for (auto& channel : *values) channel = take();
  }

  SweepCells cells_from(int first) const {
    const auto at = [&](std::span<float> values) { return values.data() + first; };
    return {at(extinction),
            {at(scattering[0]), at(scattering[1]), at(scattering[2])},
            {at(source[0]), at(source[1]), at(source[2])},
            {at(caught[0]), at(caught[1]), at(caught[2])}};
  }
};

// The rays of one face on their way through the grid. A slab is one cell thick. Its rows run along
// the first lateral axis and follow one another along the second.
class FaceSweep {
 public:
  FaceSweep(const Vec3i& dims, const Face& face, int directions_per_side, double cell_length);

  int slabs() const { return dims_[face_.axis]; }
  // Slabs must be crossed in order; `depth` is the number of those before.
  void cross_slab(Field3& gathered, const Field3& source, const SweepMedium& medium, int depth,
                  int threads);

 private:
  SweepRow row(int r) {
    return {values_.data() + std::size_t(r) * columns_ * SweepRow::kArrays, std::size_t(columns_)};
  }
  void load_row(int r, std::size_t at, const Field3& source, const SweepMedium& medium);
  void cross_row(int r, int segment);
  void store_row(int r, std::size_t at, Field3& gathered);

  Vec3i dims_;
  Face face_;
  double cell_length_;
  int columns_, rows_;                                  // cells of the face on its lateral axes
  std::size_t slab_stride_, row_stride_, cell_stride_;  // cells from one to the next in the grid
  std::vector<RayBundle> bundles_;
  std::vector<float> values_;  // of all rows of the slab
  std::vector<char> foggy_;    // by row: it has cells with extinction or scattering
};

FaceSweep::FaceSweep(const Vec3i& dims, const Face& face, int directions_per_side,
                     double cell_length)
    : dims_(dims),
      face_(face),
      cell_length_(cell_length),
      columns_(dims[face.lateral1()]),
      rows_(dims[face.lateral2()]),
      foggy_(rows_) {
  const std::size_t strides[] = {1, Field3::index(dims, 0, 1, 0), Field3::index(dims, 0, 0, 1)};
  slab_stride_ = strides[face.axis];
  row_stride_ = strides[face.lateral2()];
  cell_stride_ = strides[face.lateral1()];

  const std::size_t cells = std::size_t(columns_) * rows_;
  values_.resize(cells * SweepRow::kArrays);
  for (const Vec3d& direction : face_directions(face, directions_per_side)) {
    RayBundle& bundle = bundles_.emplace_back();
    bundle.direction = direction;
    for (auto& light : bundle.light) light.resize(cells);
    bundle.generation.resize(cells);
  }
}

void FaceSweep::cross_slab(Field3& gathered, const Field3& source, const SweepMedium& medium,
                           int depth, int threads) {
  for (RayBundle& bundle : bundles_)
    bundle.segments = slab_segments(bundle.direction, face_, slabs(), depth, cell_length_);
  const std::size_t slab = (face_.sign > 0 ? depth : slabs() - 1 - depth) * slab_stride_;
#pragma omp parallel num_threads(threads)
  {
#pragma omp for schedule(static)
    for (int r = 0; r < rows_; ++r) load_row(r, slab + r * row_stride_, source, medium);
    // Within one segment each cell has rays of its own. Between segments rays change rows, so all
    // threads wait.
    for (int segment = 0; segment < 3; ++segment) {
#pragma omp for schedule(dynamic, 1)
      for (int r = 0; r < rows_; ++r) cross_row(r, segment);
    }
#pragma omp for schedule(static)
    for (int r = 0; r < rows_; ++r) store_row(r, slab + r * row_stride_, gathered);
  }
}

void FaceSweep::load_row(int r, std::size_t at, const Field3& source, const SweepMedium& medium) {
  const SweepRow to = row(r);
  bool foggy = false;
  for (int i = 0; i < columns_; ++i, at += cell_stride_) {
    const SweepMedium::Cell& cell = medium.cells[at];
    const float* emitted = source.cell(at);
    to.extinction[i] = cell.extinction;
    foggy = foggy || cell.extinction > 0;
    for (int c = 0; c < 3; ++c) {
      to.scattering[c][i] = cell.scattering[c];
      to.source[c][i] = cell.extinction > 0 ? emitted[c] / cell.extinction : 0.0f;
      to.caught[c][i] = 0;
      foggy = foggy || cell.scattering[c] > 0;
    }
  }
  foggy_[r] = foggy;
}

struct Wrapped {
  int quotient, remainder;  // of a floor division
};

Wrapped wrap(int a, int n) {
  const int r = a % n;
  return r < 0 ? Wrapped{a / n - 1, r + n} : Wrapped{a / n, r};
}

void FaceSweep::cross_row(int r, int segment) {
  const SweepKernels& kernels = sweep_kernels();
  const SweepRow cells = row(r);
  for (RayBundle& bundle : bundles_) {
    const RaySegment& piece = bundle.segments[segment];
    if (piece.length == 0) continue;
    // The row of the face in which the rays that are here now have started.
    const auto [wraps2, start2] = wrap(r - piece.cell[face_.lateral2()], rows_);
    // Within that row they are in one run, or in two if some have wrapped around the grid.
    for (int first = 0; first < columns_;) {
      const auto [wraps1, start1] = wrap(first - piece.cell[face_.lateral1()], columns_);
      const int count = std::min(columns_ - first, columns_ - start1);
      const std::size_t at = std::size_t(start2) * columns_ + start1;
      const SweepRays rays{
          {bundle.light[0].data() + at, bundle.light[1].data() + at, bundle.light[2].data() + at},
          bundle.generation.data() + at};
      kernels.restart(rays, std::abs(wraps1) + std::abs(wraps2), count);
      if (foggy_[r]) kernels.cross(cells.cells_from(first), rays, piece.length, count);
      first += count;
    }
  }
}

void FaceSweep::store_row(int r, std::size_t at, Field3& gathered) {
  if (!foggy_[r]) return;
  const SweepRow from = row(r);
  for (int i = 0; i < columns_; ++i, at += cell_stride_) {
    float* sum = gathered.cell(at);
    for (int c = 0; c < 3; ++c) sum[c] += from.caught[c][i];
  }
}

}  // namespace

double SweepGrid::gather_factor() const {
  return 1 / (6.0 * directions_per_side_ * directions_per_side_ * cell_length_);
}

bool SweepGrid::sweep(Field3& gathered, const Field3& source, const SweepMedium& medium,
                      int threads, const std::function<bool(int, int)>& slab_done) const {
  if (threads < 1) threads = omp_get_max_threads();
  for (const Face& face : kFaces) {
    FaceSweep rays(dims_, face, directions_per_side_, cell_length_);
    for (int depth = 0; depth < rays.slabs(); ++depth) {
      rays.cross_slab(gathered, source, medium, depth, threads);
      if (!slab_done(depth + 1, rays.slabs())) return false;
    }
  }
  return true;
}

}  // namespace nbx
