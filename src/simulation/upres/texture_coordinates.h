// Coordinates that travel with the gas, for noise that does so too: each coarse cell knows the
// place at which its gas started. Where the flow has stretched or squeezed them too far, they start
// again, so that the noise stays noise. After F. Neyret, "Advected textures", Symposium on Computer
// Animation 2003; the repair by cells follows T. Kim, N. Thuerey, D. James and M. Gross, "Wavelet
// turbulence for fluid simulation", ACM Transactions on Graphics 27(3), 2008.
#pragma once

#include <array>

#include "math/int_box.h"
#include "simulation/fluid/advection.h"

namespace nbx {

/// Cells that are stretched or squeezed by this factor start again.
inline constexpr double kMostDistortion = 2;

class TextureCoordinates {
 public:
  bool empty() const { return tex_x.empty(); }
  void clear();

  /// Takes the size of the coarse box. Cells that stay keep their coordinates; new cells are at
  /// rest: their coordinates are their own place, tex(i, j, k) = (i, j, k) + tex_origin.
  void cover(const IntBox& box);
  /// Moves the coordinates along `params.velocity`. Only the lookup and the traces of `params` may
  /// be open.
  void advect(AdvectionParams params);
  /// Puts distorted cells back to rest.
  void regen_distorted();

  std::array<MField*, 3> all() { return {&tex_x, &tex_y, &tex_z}; }

  MField tex_x, tex_y, tex_z;  // in cells of the coarse domain, at cell centers
  Vec3i tex_origin;            // the domain cell of index (0, 0, 0)

 private:
  void init_tex_coords(const Vec3i& dims);
  void redim_texcoords(const Vec3i& delta, const Vec3i& dims);
  void clamp_borders();
};

}  // namespace nbx
