#include "render/march/distance_transform.h"

#include <algorithm>
#include <vector>

#include <omp.h>

namespace nbx {

namespace {

// Lines to transform together, so that reads across the grid use whole cache lines.
constexpr int kLines = 16;

// The memory of a thread, for lines of up to n cells.
struct Scratch {
  explicit Scratch(int n) : lines(std::size_t(n) * kLines), parabola(n), begin(n), value(n) {}
  std::vector<float> lines;
  std::vector<int> parabola;  // of the lower envelope: the cell of its apex
  std::vector<double> begin;  // where it becomes the lowest
  std::vector<float> value;   // its height at the apex
};

// f(q) = min over p of (q - p)^2 + f(p): the lower envelope of parabolas with their apexes at p.
// Cells with kFar have no parabola. Cells of the line are kLines apart.
void transform_line(float* f, int n, Scratch& s) {
  int count = 0;
  for (int q = 0; q < n; ++q) {
    const float height = f[q * kLines];
    if (height >= kFar) continue;
    double from = -1e30;
    for (; count > 0; --count) {
      const int top = count - 1;
      const double p = s.parabola[top];
      from = ((height + double{1} * q * q) - (s.value[top] + p * p)) / (2 * (q - p));
      if (from > s.begin[top]) break;
    }
    if (count == 0) from = -1e30;
    const int next = count++;
    s.parabola[next] = q;
    s.begin[next] = from;
    s.value[next] = height;
  }
  if (count == 0) return;
  int at = 0;
  for (int q = 0; q < n; ++q) {
    while (at + 1 < count && s.begin[at + 1] < q) ++at;
    const float d = q - s.parabola[at];
    f[q * kLines] = d * d + s.value[at];
  }
}

// The squared distance along x: one scan in each direction.
void transform_row(float* f, int n) {
  float d = kFar;
  for (int i = 0; i < n; ++i) f[i] = d = f[i] == 0 ? 0 : d + 1;
  for (int i = n - 2; i >= 0; --i) f[i] = std::min(f[i], f[i + 1] + 1);
  for (int i = 0; i < n; ++i) f[i] = f[i] < kFar ? f[i] * f[i] : kFar;
}

// Up to kLines lines that start side by side, with cells `stride` apart.
void transform_lines(float* f, int lines, int n, std::size_t stride, Scratch& s) {
  for (int q = 0; q < n; ++q) std::copy_n(f + q * stride, lines, s.lines.data() + q * kLines);
  for (int l = 0; l < lines; ++l) transform_line(s.lines.data() + l, n, s);
  for (int q = 0; q < n; ++q) std::copy_n(s.lines.data() + q * kLines, lines, f + q * stride);
}

}  // namespace

void square_distances(Field<float>& field) {
  const int nx = field.nx(), ny = field.ny(), nz = field.nz();
  const std::size_t row = nx, plane = row * ny;
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
