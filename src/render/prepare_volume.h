// Makes a RenderVolume from a frame and plain parameters.
#pragma once

#include "cache/sim_frame.h"
#include "render/render_volume.h"

namespace nbx {

/// The settings of a shader.
struct ShaderParams {
  int channel = kNoGrid;  // a grid type or a Channel; none: the shader is off
  double blur = 0;        // radius in object units
  RationalSpline curve;
  std::shared_ptr<const ColorRamp> ramp;
  int density_channel = kNoGrid;  // none: the color channel is used
  double density_blur = 0;
  RationalSpline density_curve;
  double density = 1;
  double displace = 0;  // along the velocity, in frames
  DetailNoiseParams noise;
};

struct VolumeParams {
  ShaderParams smoke, fire;
  double albedo = 1;     // of the smoke; below 0 counts as 0
  double occlusion = 1;  // fire of this density hides all smoke in its voxel; 0: any fire does
  Filter filter = Filter::kBSpline;
  double viewStep = 0.25, shadowStep = 0.5;  // in voxels, clamped to [0.001, 1]
  double motion_blur = 0;                    // time that the shutter is open, in frames
  double motion_blur_step = 1;               // voxels
  std::optional<RationalSpline> depth_fade;
  double frames_per_second = 25;
  double seconds = 0;  // the document's time; detail noise changes with it

  Affine3d world_to_object = Affine3d::identity();
  /// From the object's space to indices of the frame's grids. The length of its first row is 1 over
  /// a voxel's edge in object units.
  Affine3d object_to_cell = Affine3d::identity();
};

/// Fills `volume`, except for masks, matte, excluded lights and light field. A frame with fewer
/// than 3 cells on an axis shows nothing, nor does a shader without its channel or ramp. The volume
/// shares the frame's fields, so `frame` may be destroyed afterwards. Throws Exception for a
/// damaged grid, std::bad_alloc after a log line.
void prepare_volume(RenderVolume& volume, SimFrame& frame, const VolumeParams& params);

/// The second part of prepare_volume, which needs bound samplers: sets matrices, scales, proximity,
/// velocities, vorticity mask and advected coordinates.
void prepareFields(RenderVolume& volume, SimFrame& frame, const VolumeParams& params);

}  // namespace nbx
