// One volume object as the ray marcher sees it: fields, shaders and matrices of one frame. Filled
// before the first ray (see prepare_volume.h) and only read while rays run.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "math/affine_transform.h"
#include "math/rational_spline.h"
#include "render/color_ramp.h"
#include "render/lighting.h"
#include "render/shade/channel_sampler.h"
#include "render/shade/detail_noise.h"
#include "util/units.h"

namespace nbx {

/// One of the two shaders of a volume. With v the color channel and w the density channel, each at
/// the shader's displaced point,
///
///     c = color_curve(v),   b = density_curve(w), or c without a density channel
///
/// Curves are rebuilt. Copies share the grids.
struct VolumeShader {
  bool on = false;
  ChannelSampler color_sampler, density_sampler;
  RationalSpline color_curve, density_curve;
  std::shared_ptr<const ColorRamp> ramp;
  double density_scale = 1;
  double displace = 0;  // points move against the velocity by this: voxels per meter a second
  DetailNoise noise;

  /// What tells how dense it is there.
  const ChannelSampler& extinction_sampler() const {
    return density_sampler ? density_sampler : color_sampler;
  }
  const RationalSpline& extinction_curve() const {
    return density_sampler ? density_curve : color_curve;
  }
};

/// Coordinates that traveled with the gas, for noise that does. Empty in most frames.
struct AdvectedCoords {
  FieldHandle x, y, z;
  FieldHandle age;  // from 2 on the point isn't moved
  bool all() const { return x && y && z; }
};

/// A caller may derive from it to keep what belongs to its side of the object.
struct RenderVolume {
  bool ready = false;  // this volume is traced

  VolumeShader smoke, fire;
  double smokeColorScale = 1;                // density times albedo
  double fireMaskScale = 1;                  // how much of the smoke fire hides within a voxel
  std::optional<RationalSpline> depth_fade;  // over hundredths of world units along the ray
  std::shared_ptr<LightField> light_field;   // without one smoke is unlit, as under white light

  FieldHandle velU, velV, velW;  // staggered (math/field.h), meters a second; all or none
  FieldHandle vorticityMask;     // scales detail noise
  AdvectedCoords advectedCoords;
  Vec3i gridOffset;  // domain cell of grid index (0, 0, 0)
  Vec3i dims;        // cells of the largest grid that isn't a velocity

  /// Distance in voxels from what may be visible, negative inside; see proximity.h.
  FieldHandle proximity;
  double proximityShift = 0;  // displacement that `proximity` has absorbed

  Vec3d voxelBoxMin, voxelBoxMax;                 // (0, 0, 0) to dims - 1
  Affine3d worldToVoxel, voxelToWorld;            // voxel centers have whole coordinates
  double voxelsPerMetre = 1, metresPerVoxel = 1;  // meters of the unscaled object
  double metresPerUnit = kMetersPerUnit;
  double voxelLength = 1;                   // world length of a voxel's edge along x
  double sigmaScale = 1;                    // extinction per world unit and unit of density
  double viewStep = 0.5, shadowStep = 0.5;  // step lengths as a share of a voxel

  double blurTime = 0;  // seconds that the shutter is open
  double blurStep = 1;  // longest step of the walk along the flow, in voxels

  std::uint32_t excludeMask = 0;       // classes of rays that pass through unchanged
  std::uint32_t innerExcludeMask = 0;  // the same for rays cast while a volume asks for its light
  bool matte = false;                  // shows a plain color, by its opacity
  Color matteColor{0, 0, 0};

  bool has_velocity() const { return velU && velV && velW; }
  bool shows() const { return smoke.on || fire.on; }
  /// Drops what belongs to the frame; the light field goes too.
  void release_frame();
};

}  // namespace nbx
