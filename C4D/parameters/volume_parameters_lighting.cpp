#include "C4D/parameters/volume_parameter_groups.h"
#include "C4D/parameters/volume_shading_parameters.h"

namespace nbx {

using namespace table;

ParameterList lighting_parameters() {
  return {
      cycle(OVOLUME_LIGHT_MODE, "OVOLUME_LIGHT_MODE", OVOLUME_LIGHT_LINEAR,
            {{OVOLUME_LIGHT_NONE, "none"},
             {OVOLUME_LIGHT_LINEAR, "linear"},
             {OVOLUME_LIGHT_CUBIC, "cubic"},
             {OVOLUME_LIGHT_PER_THREAD, "per_thread"},
             {OVOLUME_LIGHT_EXACT, "exact"}},
            "How light in the smoke is looked up: linear and cubic sample one grid, per_thread one "
            "for each light, which is right for every direction of view; exact asks at each point; "
            "none: smoke is its own color"),
      real(OVOLUME_LIGHT_GRID_SCALE, "OVOLUME_LIGHT_GRID_SCALE", 1, 0.001, 64, "per voxel",
           "Points of the grid of light along a voxel's edge"),
      real(OVOLUME_PHASE_G, "OVOLUME_PHASE_G", 0, -0.9999, 0.9999, "",
           "Mean cosine of scattering: above 0 smoke scatters forwards, below 0 back"),
      still(flag(OVOLUME_MULTI_SCATTER, "OVOLUME_MULTI_SCATTER", false,
                 "Light is scattered in the smoke again and again, else once")),
      whole(OVOLUME_SCATTER_SWEEPS, "OVOLUME_SCATTER_SWEEPS", 1, 1, 1000,
            "Most passes of multiple scattering"),
      whole(OVOLUME_SCATTER_DIRECTIONS, "OVOLUME_SCATTER_DIRECTIONS", 3, 1, 64,
            "Directions of multiple scattering along an edge of the cube of all directions"),
      real(OVOLUME_SCATTER_DIRECT, "OVOLUME_SCATTER_DIRECT", 1, 0, kUnbounded, "",
           "Share of the lights in multiple scattering"),
      real(OVOLUME_SCATTER_EMISSION, "OVOLUME_SCATTER_EMISSION", 1, 0, kUnbounded, "",
           "Share of the fire in multiple scattering"),
      real(OVOLUME_SCATTER_EXTINCTION, "OVOLUME_SCATTER_EXTINCTION", 1, 0, kUnbounded, "",
           "Density of the smoke for multiple scattering over that for the eye"),
  };
}

ParameterList marching_parameters() {
  return {
      real(OVOLUME_VIEW_STEP, "OVOLUME_VIEW_STEP", 0.25, 0.001, 1, "voxels",
           "Step along rays from the camera"),
      real(OVOLUME_SHADOW_STEP, "OVOLUME_SHADOW_STEP", 0.5, 0.001, 1, "voxels",
           "Step along rays to lights"),
      cycle(OVOLUME_FILTER, "OVOLUME_FILTER", OVOLUME_FILTER_BSPLINE,
            {{OVOLUME_FILTER_LINEAR, "linear"},
             {OVOLUME_FILTER_BSPLINE, "bspline"},
             {OVOLUME_FILTER_CATMULL_ROM, "catmull_rom"}},
            "How values between voxels are made: linear is quick, bspline soft, catmull_rom sharp"),
      real(OVOLUME_MOTION_BLUR, "OVOLUME_MOTION_BLUR", 0, 0, kUnbounded, "frames",
           "Time that the shutter is open; 0: no motion blur"),
      real(OVOLUME_MOTION_BLUR_STEP, "OVOLUME_MOTION_BLUR_STEP", 1, 0.001, kUnbounded, "voxels",
           "Step along the way of the gas while the shutter is open"),
      still(flag(OVOLUME_DEPTH_FADE, "OVOLUME_DEPTH_FADE", false,
                 "Smoke and fire fade along the ray by depth_fade_curve")),
      straight_curve(OVOLUME_DEPTH_FADE_CURVE, "OVOLUME_DEPTH_FADE_CURVE", {{0, 1}, {1, 1}},
                     "From the distance to the ray's start, in 100 units, to what is left"),
  };
}

}  // namespace nbx
