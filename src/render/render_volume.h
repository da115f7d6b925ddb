// One volume object as the ray marcher sees it: fields, shaders and matrices of one frame. It is
// filled before the first ray (see prepare_volume.h) and only read while rays are traced.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "math/affine_transform.h"
#include "math/rational_spline.h"
#include "render/color_ramp.h"
#include "render/lighting.h"
#include "render/march/near_bricks.h"
#include "render/shade/channel_sampler.h"
#include "render/shade/detail_noise.h"
#include "util/units.h"

namespace nbx {

/// One of the two shaders of a volume. With v the value of the color channel and w the value of the
/// density channel, both at the shader's displaced point,
///
///     c = color_curve(v)
///     b = density_curve(w), or c if there is no density channel
///
/// The curves have been rebuilt. Copies share the grids.
struct VolumeShader {
  bool on = false;
  ChannelSampler color_sampler, density_sampler;
  RationalSpline color_curve, density_curve;
  std::shared_ptr<const ColorRamp> ramp;
  double density_scale = 1;
  double displace = 0;  // how far points move against the velocity: voxels per meter per second
  DetailNoise noise;

  /// The channel and the curve of b.
  const ChannelSampler& extinction_sampler() const {
    return density_sampler ? density_sampler : color_sampler;
  }
  const RationalSpline& extinction_curve() const {
    return density_sampler ? density_curve : color_curve;
  }
};

/// Coordinates that were advected with the gas, so that noise follows it. Empty in most frames.
struct AdvectedCoords {
  FieldHandle x, y, z;
  FieldHandle age;  // from 2 on, noise does not move the point
  bool all() const { return x && y && z; }
};

struct RenderVolume {
  bool ready = false;  // rays are traced through this volume

  VolumeShader smoke, fire;
  double smokeColorScale = 1;                // density scale times albedo
  double fireMaskScale = 1;                  // share of the smoke that fire of density 1 hides
  std::optional<RationalSpline> depth_fade;  // over the distance along the ray / 100 world units
  std::shared_ptr<LightField> light_field;   // none: smoke shows its color, as under white light

  FieldHandle velU, velV, velW;  // staggered (math/field.h), meters per second; all or none
  FieldHandle vorticityMask;     // scales detail noise
  AdvectedCoords advectedCoords;
  Vec3i gridOffset;  // domain cell of grid index (0, 0, 0)
  Vec3i dims;        // cells of the largest grid that is not a velocity

  /// Distance in voxels to anything that may be visible, negative inside; see proximity.h.
  FieldHandle proximity;
  NearBricks near;            // where `proximity` is never above 0
  double proximityShift = 0;  // displacement that `proximity` already allows for

  Vec3d voxelBoxMin, voxelBoxMax;                 // (0, 0, 0) to dims - 1
  Affine3d worldToVoxel, voxelToWorld;            // voxel centers have whole coordinates
  double voxelsPerMetre = 1, metresPerVoxel = 1;  // in meters of the unscaled object
  double metresPerUnit = kMetersPerUnit;
  double voxelLength = 1;                   // world length of a voxel's edge along x
  double sigmaScale = 1;                    // extinction per world unit and unit of density
  double viewStep = 0.5, shadowStep = 0.5;  // step lengths, in voxels

  double blurTime = 0;  // seconds for which the shutter is open
  double blurStep = 1;  // longest step along the flow, in voxels

  std::uint32_t excludeMask = 0;       // classes of rays that pass through unchanged
  std::uint32_t innerExcludeMask = 0;  // the same for rays that compute the light in a volume
  bool matte = false;                  // shows a plain color, weighted by its opacity
  Color matteColor{0, 0, 0};
  std::vector<bool> excluded_lights;  // by light: it does not shine on this volume

  bool has_velocity() const { return velU && velV && velW; }
  bool shows() const { return smoke.on || fire.on; }
  /// Releases everything that belongs to the frame, with the light field.
  void release_frame();
};

}  // namespace nbx
