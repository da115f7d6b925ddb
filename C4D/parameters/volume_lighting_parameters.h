// Light in smoke, and rays through the volume.
#pragma once

#include "C4D/parameters/volume_shading_parameters.h"

namespace nbx {

/// Values of LIGHT_MODE.
enum VolumeLightMode : std::int32_t {
  OVOLUME_LIGHT_NONE = 0,
  OVOLUME_LIGHT_LINEAR = 1281,
  OVOLUME_LIGHT_CUBIC = 1282,
  OVOLUME_LIGHT_PER_THREAD = 1283,
  OVOLUME_LIGHT_EXACT = 1284,
};

/// Values of FILTER.
enum VolumeFilter : std::int32_t {
  OVOLUME_FILTER_LINEAR = 1208,
  OVOLUME_FILTER_BSPLINE = 1209,
  OVOLUME_FILTER_CATMULL_ROM = 1210,
};

struct LightingParameters : FireShadingParameters {
  Choice<VolumeLightMode> LIGHT_MODE =
      cycle(1280, "LIGHT_MODE", OVOLUME_LIGHT_LINEAR,
            {{OVOLUME_LIGHT_NONE, "none"},
             {OVOLUME_LIGHT_LINEAR, "linear"},
             {OVOLUME_LIGHT_CUBIC, "cubic"},
             {OVOLUME_LIGHT_PER_THREAD, "per_thread"},
             {OVOLUME_LIGHT_EXACT, "exact"}},
            "How light in the smoke is computed. linear, cubic: interpolated in one grid; "
            "per_thread: "
            "in one grid for each light, correct for every view direction; exact: computed at each "
            "point; none: smoke shows its own color")
          .enabled_if(has_smoke);
  const Condition is_lit = has_smoke && is_not(LIGHT_MODE, OVOLUME_LIGHT_NONE);
  const Condition scatters = is_lit && on(MULTI_SCATTER);
  Real LIGHT_GRID_SCALE =
      real(1367, "LIGHT_GRID_SCALE", 1, 0.001, 64, "per voxel",
           "Points of the light grid along a voxel's edge: higher values give sharper shadows")
          .enabled_if(is_lit && (is_not(LIGHT_MODE, OVOLUME_LIGHT_EXACT) || on(MULTI_SCATTER)));
  Real PHASE_G = real(1020, "PHASE_G", 0, -0.9999, 0.9999, "",
                      "Mean cosine of the scattering angle: above 0 smoke scatters light forward, "
                      "below 0 backward")
                     .enabled_if(is_lit && off(MULTI_SCATTER));
  Flag MULTI_SCATTER = flag(1383, "MULTI_SCATTER", false,
                            "Light is scattered many times in the smoke, which makes it softer and "
                            "brighter inside; otherwise once")
                           .still()
                           .enabled_if(is_lit);
  Whole SCATTER_SWEEPS = whole(1384, "SCATTER_SWEEPS", 1, 1, 1000,
                               "Largest number of multiple-scattering passes: more carry light "
                               "deeper into the smoke")
                             .enabled_if(scatters);
  Whole SCATTER_DIRECTIONS = whole(1385, "SCATTER_DIRECTIONS", 3, 1, 64,
                                   "Number of directions along each edge of a cube face (n x n per "
                                   "face): more give smoother light")
                                 .enabled_if(scatters);
  Real SCATTER_DIRECT = real(1386, "SCATTER_DIRECT", 1, 0, kUnbounded, "",
                             "How strongly the lights contribute to multiple scattering")
                            .enabled_if(scatters);
  Real SCATTER_EMISSION = real(1387, "SCATTER_EMISSION", 1, 0, kUnbounded, "",
                               "How strongly the fire contributes to multiple scattering")
                              .enabled_if(scatters && has_fire);
  Real SCATTER_EXTINCTION = real(1388, "SCATTER_EXTINCTION", 1, 0, kUnbounded, "",
                                 "Density of the smoke for multiple scattering, relative to that "
                                 "for viewing: lower values let light reach deeper")
                                .enabled_if(scatters);
};

struct MarchingParameters : LightingParameters {
  Real VIEW_STEP =
      real(1241, "VIEW_STEP", 0.25, 0.001, 1, "voxels",
           "Step length along camera rays: shorter steps give less noise but take longer");
  Real SHADOW_STEP = real(1397, "SHADOW_STEP", 0.5, 0.001, 1, "voxels",
                          "Step length along rays to lights: shorter steps give smoother shadows "
                          "but take longer");
  Choice<VolumeFilter> FILTER =
      cycle(1207, "FILTER", OVOLUME_FILTER_BSPLINE,
            {{OVOLUME_FILTER_LINEAR, "linear"},
             {OVOLUME_FILTER_BSPLINE, "bspline"},
             {OVOLUME_FILTER_CATMULL_ROM, "catmull_rom"}},
            "Interpolation between voxels: linear is fast, bspline soft, catmull_rom sharp");
  Real MOTION_BLUR = real(1277, "MOTION_BLUR", 0, 0, kUnbounded, "frames",
                          "Time for which the shutter is open; 0: no motion blur");
  Real MOTION_BLUR_STEP = real(1278, "MOTION_BLUR_STEP", 1, 0.001, kUnbounded, "voxels",
                               "Step length along the path of the gas while the shutter is open");
  Flag DEPTH_FADE =
      flag(1408, "DEPTH_FADE", false, "Smoke and fire fade with distance, by depth_fade_curve")
          .still();
  Curve DEPTH_FADE_CURVE =
      straight_curve(1409, "DEPTH_FADE_CURVE", {{0, 1}, {1, 1}},
                     "Maps the distance from the ray's start, in 100 units, to the fraction that "
                     "remains")
          .enabled_if(on(DEPTH_FADE));
};

}  // namespace nbx
