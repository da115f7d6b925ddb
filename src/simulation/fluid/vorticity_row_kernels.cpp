#include "simulation/fluid/vorticity_row_kernels.h"

namespace nbx::NBX_ISA {

namespace {

// The mean of the two faces of each cell of a row, `step` apart.
struct CellRow {
  const float* face;
  std::ptrdiff_t step;
  float operator()(int i) const { return (face[i] + face[i + step]) * 0.5f; }
  CellRow moved(std::ptrdiff_t by) const { return {face + by, step}; }
};

void curl(float* __restrict wx, float* __restrict wy, float* __restrict wz, float* __restrict mag,
          const FaceRow& faces, float s, int n) {
  const CellRow u{faces.u, 1}, v{faces.v, faces.sv.y}, w{faces.w, faces.sw.z};
  const CellRow u_north = u.moved(faces.su.y), u_south = u.moved(-faces.su.y);
  const CellRow u_high = u.moved(faces.su.z), u_low = u.moved(-faces.su.z);
  const CellRow v_high = v.moved(faces.sv.z), v_low = v.moved(-faces.sv.z);
  const CellRow w_north = w.moved(faces.sw.y), w_south = w.moved(-faces.sw.y);
  for (int i = 0; i < n; ++i) {
    const float x = ((w_north(i) - w_south(i)) - (v_high(i) - v_low(i))) * s;
    const float y = ((u_high(i) - u_low(i)) - (w(i + 1) - w(i - 1))) * s;
    const float z = ((v(i + 1) - v(i - 1)) - (u_north(i) - u_south(i))) * s;
    wx[i] = x;
    wy[i] = y;
    wz[i] = z;
    mag[i] = __builtin_sqrtf(x * x + y * y + z * z);
  }
}

void confine(float* __restrict wx, float* __restrict wy, float* __restrict wz,
             const float* __restrict mag, const RowSteps& steps, float scale, int n) {
  const std::ptrdiff_t dy = steps.y, dz = steps.z;
  for (int i = 0; i < n; ++i) {
    const float gx = mag[i + 1] - mag[i - 1];
    const float gy = mag[i + dy] - mag[i - dy];
    const float gz = mag[i + dz] - mag[i - dz];
    const float square = gx * gx + gy * gy + gz * gz;
    const float inverse = square > 1e-20f ? 1 / __builtin_sqrtf(square) : 0;
    const float Nx = gx * inverse, Ny = gy * inverse, Nz = gz * inverse;
    const float x = wx[i], y = wy[i], z = wz[i];
    wx[i] = (Ny * z - Nz * y) * scale;
    wy[i] = (Nz * x - Nx * z) * scale;
    wz[i] = (Nx * y - Ny * x) * scale;
  }
}

void add_force(float* __restrict u, const float* f, const float* f_before, float c, int n) {
  for (int i = 0; i < n; ++i) u[i] += (f[i] + f_before[i]) * c;
}

// A potential times the mean of the map over the four cells around its edge: `m` is the cell of the
// edge, `a` and `b` are the steps to the cells before it.
template <bool kMap>
float scaled(float p, const float* m, std::ptrdiff_t a, std::ptrdiff_t b) {
  if constexpr (!kMap) return p;
  return p * (((m[-a - b] + m[-b]) + (m[-a] + m[0])) * 0.25f);
}

//  u += ((Pz(j+1) - Pz) - (Py(k+1) - Py)) scale
//  v += ((Px(k+1) - Px) - (Pz(i+1) - Pz)) scale
//  w += ((Py(i+1) - Py) - (Px(j+1) - Px)) scale
template <bool kMap>
void add_scaled_curl(float* __restrict u, float* __restrict v, float* __restrict w,
                     const PotentialRow& row, float scale, int n) {
  const PotentialRow psi = row;
  const std::ptrdiff_t dy = psi.steps.y, dz = psi.steps.z;
  const float *m = psi.map, *m_north = m + dy, *m_high = m + dz;
  for (int i = 0; i < n; ++i) {
    const float px = scaled<kMap>(psi.x[-i], m + i, dy, dz);
    const float py = scaled<kMap>(psi.y[i], m + i, 1, dz);
    const float pz = scaled<kMap>(psi.z[i], m + i, 1, dy);
    const float pz_north = scaled<kMap>(psi.z_north[i], m_north + i, 1, dy);
    const float py_high = scaled<kMap>(psi.y_high[i], m_high + i, 1, dz);
    u[i] += ((pz_north - pz) - (py_high - py)) * scale;
    const float px_high = scaled<kMap>(psi.x_high[-i], m_high + i, dy, dz);
    const float pz_east = scaled<kMap>(psi.z[i + 1], m + i + 1, 1, dy);
    v[i] += ((px_high - px) - (pz_east - pz)) * scale;
    const float py_east = scaled<kMap>(psi.y[i + 1], m + i + 1, 1, dz);
    const float px_north = scaled<kMap>(psi.x_north[-i], m_north + i, dy, dz);
    w[i] += ((py_east - py) - (px_north - px)) * scale;
  }
}

}  // namespace

extern const VorticityRowKernels kVorticityRows;
const VorticityRowKernels kVorticityRows{curl, confine, add_force, add_scaled_curl<false>,
                                         add_scaled_curl<true>};

}  // namespace nbx::NBX_ISA
