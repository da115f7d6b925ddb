// Which part of the domain is simulated, and how.
#pragma once

#include "C4D/parameters/volume_motion_parameters.h"

namespace nbx {

struct ContainerParameters : NoiseParameters {
  Real BOX_THRESHOLD_DENSITY = threshold(1267, "BOX_THRESHOLD_DENSITY",
                                         "Gas with more density than this is simulated: higher "
                                         "values cut off thin smoke and save time")
                                   .enabled_if(has_density);
  Real BOX_THRESHOLD_TEMPERATURE = threshold(1268, "BOX_THRESHOLD_TEMPERATURE",
                                             "Gas with more temperature than this is simulated")
                                       .enabled_if(has_temperature);
  Real BOX_THRESHOLD_FUEL =
      threshold(1269, "BOX_THRESHOLD_FUEL", "Gas with more fuel than this is simulated")
          .enabled_if(has_fuel);
  Real BOX_THRESHOLD_BURN =
      threshold(1270, "BOX_THRESHOLD_BURN", "Gas with more burn than this is simulated")
          .enabled_if(has_burn);
  Real VELOCITY_THRESHOLD =
      real(1315, "VELOCITY_THRESHOLD", 1000, -kUnbounded, kUnbounded, "units/s",
           "Empty air that moves faster than this is simulated too; below 0: "
           "never");
  Flag FIT_TO_WALLS = flag(1412, "FIT_TO_WALLS", true,
                           "Simulate everything between the gas and the domain's walls, so that "
                           "walls influence the flow");

 private:
  Line<double> threshold(std::int32_t id, const char* name, const char* help) {
    return real(id, name, 0.001, 0, kUnbounded, "", help);
  }
};

struct SolverParameters : ContainerParameters {
  Flag CACHE_VELOCITY =
      flag(1106, "CACHE_VELOCITY", false,
           "Store the velocity in the cache: needed for motion blur, displacement, "
           "particles that follow the gas, and up-resolution")
          .still()
          .changes(Changes::kFrames);
  Flag ADVECT_CUBIC =
      flag(1070, "ADVECT_CUBIC", false,
           "Sample with cubic interpolation: finer detail, slower; otherwise linear")
          .still();
  Flag ADAPTIVE_TRACER = flag(1407, "ADAPTIVE_TRACER", false,
                              "Trace the gas voxel by voxel: more accurate when it travels many "
                              "voxels in a substep");
  Flag CACHE_DIRECT = flag(1364, "CACHE_DIRECT", false,
                           "Write each frame before the run continues: less memory, slower")
                          .still()
                          .changes(Changes::kRun);
};

/// All that the simulation reads.
using SimulationParameters = SolverParameters;

}  // namespace nbx
