// The domain of a simulation and its time.
#pragma once

#include "C4D/parameters/volume_channel.h"

namespace nbx {

/// Values of TIME_MODE.
enum VolumeTimeMode : std::int32_t {
  OVOLUME_TIME_PREVIEW_RANGE = 1251,
  OVOLUME_TIME_DOCUMENT_RANGE = 1252,
  OVOLUME_TIME_OWN_RANGE = 1253,
};

struct DomainParameters : VolumeGroup {
  DomainParameters() : VolumeGroup(Changes::kGas) {}

  Vector SIZE = vector(1033, "SIZE", {200, 200, 200}, "units",
                       "Edge lengths of the domain, which is centered on the object")
                    .bounded(0, 1e12);
  Real VOXEL_SIZE = real(1219, "VOXEL_SIZE", 1, -kUnbounded, 1e12, "units",
                         "Edge length of a voxel, above 0. Smaller voxels show finer detail; half "
                         "the size takes 8 times the memory")
                        .still();
  Flag CLOSED_X_MIN = flag(1308, "CLOSED_X_MIN", false,
                           "Wall at the low end of x; otherwise gas leaves the domain there");
  Flag CLOSED_X_MAX = flag(1309, "CLOSED_X_MAX", false, "Wall at the high end of x");
  Flag CLOSED_Y_MIN = flag(1310, "CLOSED_Y_MIN", false, "Wall at the low end of y (a floor)");
  Flag CLOSED_Y_MAX = flag(1311, "CLOSED_Y_MAX", false, "Wall at the high end of y (a ceiling)");
  Flag CLOSED_Z_MIN = flag(1312, "CLOSED_Z_MIN", false, "Wall at the low end of z");
  Flag CLOSED_Z_MAX = flag(1313, "CLOSED_Z_MAX", false, "Wall at the high end of z");
};

struct TimeParameters : DomainParameters {
  Choice<VolumeTimeMode> TIME_MODE =
      cycle(1250, "TIME_MODE", OVOLUME_TIME_PREVIEW_RANGE,
            {{OVOLUME_TIME_PREVIEW_RANGE, "preview_range"},
             {OVOLUME_TIME_DOCUMENT_RANGE, "document_range"},
             {OVOLUME_TIME_OWN_RANGE, "own_range"}},
            "Frames to simulate: a range of the document, or time_start to time_end")
          .still()
          .changes(Changes::kRun);
  Time TIME_START = time(1117, "TIME_START", {0, 1}, "First frame of own_range")
                        .changes(Changes::kRun)
                        .enabled_if(is(TIME_MODE, OVOLUME_TIME_OWN_RANGE));
  Time TIME_END = time(1217, "TIME_END", {3, 1}, "Last frame of own_range")
                      .changes(Changes::kRun)
                      .enabled_if(is(TIME_MODE, OVOLUME_TIME_OWN_RANGE));
  Real TIME_SCALE = real(1002, "TIME_SCALE", 1, 0, kUnbounded, "",
                         "Speed of the simulation relative to the document: below 1 slow motion, "
                         "above 1 fast motion");
  Real CFL = real(1055, "CFL", 2, 0.01, kUnbounded, "voxels",
                  "Largest distance that gas may travel in a substep (CFL number). Lower is more "
                  "accurate and slower");
  Whole MAX_SUBSTEPS =
      whole(1258, "MAX_SUBSTEPS", 1, 1, 10000,
            "Largest number of substeps in a frame. Beyond it, gas may travel farther than cfl");
  Whole SOURCE_SUBSTEPS =
      whole(1354, "SOURCE_SUBSTEPS", 0, 0, 10000,
            "Number of positions at which a moving source emits in a substep. Higher values close "
            "gaps behind fast sources; 0: one per voxel of movement");
};

}  // namespace nbx
