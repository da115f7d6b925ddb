// The velocity of an up-resolution run. It isn't simulated: for each frame the velocity of a coarse
// run is scaled up by `upres_factor`, and detail is added that the coarse flow carries along.
#pragma once

#include <optional>

#include "simulation/cusl_kernels3d.h"
#include "simulation/upres/low_frame.h"
#include "simulation/upres/texture_coordinates.h"
#include "simulation/upres/upres_detail.h"

namespace nbx {

class UpresFluid final : public CuslKernels3D {
 public:
  using CuslKernels3D::CuslKernels3D;

  /// Opens the coarse frame that the coming frame moves with. Returns the box that it covers, in
  /// fine cells. Nothing, after a log line, if the source lacks its velocity: the gas then moves
  /// with the velocity of the frame before.
  std::optional<IntBox> open_source(const std::shared_ptr<BFS>& source);

  /// In the first substep of a frame, begin_update.
  void begin_step() override;
  /// Takes the new dimensions and no content, since the velocity is made anew.
  void resize(const Vec3i& delta) override;
  void clear() override;

  /// With the texture coordinates, if `channels` has kTexture.
  void store(SimFrame& frame, const std::set<int>& channels, const GridMatrix& matrix) override;
  void load(SimFrame& frame) override;

 private:
  void begin_update();
  void carry_texture(const LowFrame& low);
  void scale_up(const LowFrame& low);
  double low_dx() const { return params_.upres_factor * domain_.dx; }
  double frame_length() const { return clock_.sim_time.length.value(); }

  LowFrame low_;  // from open_source to begin_step
  TextureCoordinates tex_;
  UpresDetail detail_maker_;
};

}  // namespace nbx
