// Makes a RenderVolume of a frame, from plain parameters.
#pragma once

#include "cache/sim_frame.h"
#include "render/render_volume.h"

namespace nbx {

/// As the user sets a shader.
struct ShaderParams {
  int channel = kNoGrid;  // a grid type or a Channel; decides whether the shader is on
  double blur = 0;        // radius in object units
  RationalSpline curve;
  std::shared_ptr<const ColorRamp> ramp;
  int density_channel = kNoGrid;  // none: the color channel serves
  double density_blur = 0;
  RationalSpline density_curve;
  double density = 1;
  double displace = 0;  // along the velocity, in frames
  DetailNoiseParams noise;
};

struct VolumeParams {
  ShaderParams smoke, fire;
  double albedo = 1;     // of smoke; below 0 counts as 0
  double occlusion = 1;  // density of fire that hides all smoke in its voxel; 0: any does
  Filter filter = Filter::kBSpline;
  double viewStep = 0.25, shadowStep = 0.5;  // shares of a voxel, clamped to [0.001, 1]
  double motion_blur = 0;                    // shutter in frame lengths
  double motion_blur_step = 1;               // voxels
  std::optional<RationalSpline> depth_fade;
  double frames_per_second = 25;
  double seconds = 0;  // the document's time, by which detail noise changes

  Affine3d world_to_object = Affine3d::identity();
  /// From the object's space to indices of the frame's grids: its first axis has the length of one
  /// over a voxel's edge in object units.
  Affine3d object_to_cell = Affine3d::identity();
};

/// Fills all of `volume` but masks, matte and light field. A frame with fewer than 3 cells on an
/// axis, and a shader without its channel or ramp, show nothing. Fields of the frame are shared;
/// `frame` may go afterwards. Throws Exception for a damaged grid, std::bad_alloc after a log line.
void prepare_volume(RenderVolume& volume, SimFrame& frame, const VolumeParams& params);

/// The part that builds derived fields, from bound samplers and matrices: also for volumes that a
/// caller fills by hand. Sets scales, proximity, velocities, vorticity mask, advected coordinates.
void prepareFields(RenderVolume& volume, SimFrame& frame, const VolumeParams& params);

}  // namespace nbx
