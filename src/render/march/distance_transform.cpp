#include "render/march/distance_transform.h"

#include <algorithm>
#include <vector>

#include <omp.h>

namespace nbx {

namespace {

// Lines that are handled together, so that reads across the grid fill lines of the cache.
constexpr int kLines = 16;

// What a thread needs for lines of up to n cells.
struct Scratch {
  explicit Scratch(int n)
      : lines(static_cast<std::size_t>(n) * kLines),
        parabola(static_cast<std::size_t>(n)),
        begin(static_cast<std::size_t>(n)),
        value(static_cast<std::size_t>(n)) {}
  std::vector<float> lines;
  std::vector<int> parabola;  // of the lower envelope: where its apex lies
  std::vector<double> begin;  // from where on it is the lowest
  std::vector<float> value;   // its height at the apex
};

// f(q) = min over p of (q - p)^2 + f(p): the lower envelope of parabolas with their apexes at p.
// Those of kFar don't take part. Cells of the line are kLines apart.
void transform_line(float* f, int n, Scratch& s) {
  int count = 0;
  for (int q = 0; q < n; ++q) {
    const float height = f[q * kLines];
    if (height >= kFar) continue;
    double from = -1e30;
    for (; count > 0; --count) {
      const auto top = static_cast<std::size_t>(count - 1);
      const double p = s.parabola[top];
      from = ((height + double{1} * q * q) - (s.value[top] + p * p)) / (2 * (q - p));
      if (from > s.begin[top]) break;
    }
    if (count == 0) from = -1e30;
    const auto next = static_cast<std::size_t>(count++);
    s.parabola[next] = q;
    s.begin[next] = from;
    s.value[next] = height;
  }
  if (count == 0) return;
  int at = 0;
  for (int q = 0; q < n; ++q) {
    while (at + 1 < count && s.begin[at + 1] < q) ++at;
    const auto a = static_cast<std::size_t>(at);
    const float d = q - s.parabola[a];
    f[q * kLines] = d * d + s.value[a];
  }
}

// The distance along x: one scan forth and one back.
void transform_row(float* f, int n) {
  float d = kFar;
  for (int i = 0; i < n; ++i) f[i] = d = f[i] == 0 ? 0 : d + 1;
  for (int i = n - 2; i >= 0; --i) f[i] = std::min(f[i], f[i + 1] + 1);
  for (int i = 0; i < n; ++i) f[i] = f[i] < kFar ? f[i] * f[i] : kFar;
}

// Up to kLines lines that begin side by side and whose cells are `stride` apart.
void transform_lines(float* f, int lines, int n, std::size_t stride, Scratch& s) {
  for (int q = 0; q < n; ++q)
    std::copy_n(f + static_cast<std::size_t>(q) * stride, lines, s.lines.data() + q * kLines);
  for (int l = 0; l < lines; ++l) transform_line(s.lines.data() + l, n, s);
  for (int q = 0; q < n; ++q)
    std::copy_n(s.lines.data() + q * kLines, lines, f + static_cast<std::size_t>(q) * stride);
}

}  // namespace

void square_distances(Field<float>& field) {
  const int nx = field.nx(), ny = field.ny(), nz = field.nz();
  const std::size_t row = static_cast<std::size_t>(nx), plane = row * static_cast<std::size_t>(ny);
  std::vector<Scratch> scratch(omp_get_max_threads(), Scratch(std::max(ny, nz)));
#pragma omp parallel
  {
    Scratch& s = scratch[omp_get_thread_num()];
#pragma omp for schedule(static)
    for (int k = 0; k < nz; ++k) {
      for (int j = 0; j < ny; ++j) transform_row(&field(0, j, k), nx);
      for (int i = 0; i < nx; i += kLines)
        transform_lines(&field(i, 0, k), std::min(kLines, nx - i), ny, row, s);
    }
#pragma omp for schedule(static)
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; i += kLines)
        transform_lines(&field(i, j, 0), std::min(kLines, nx - i), nz, plane, s);
  }
}

}  // namespace nbx
