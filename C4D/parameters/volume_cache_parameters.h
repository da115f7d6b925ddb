// The cache, states, and which cached frame is shown.
#pragma once

#include "C4D/parameters/volume_channel.h"

namespace nbx {

/// Version of the volume object's set of parameters, kept in VERSION.
inline constexpr std::int32_t kVolumeParametersVersion = 1;

struct CacheParameters : VolumeGroup {
  CacheParameters() : VolumeGroup(Changes::kRun) {}

  File CACHE_NAME = file(1161, "CACHE_NAME",
                         "Folder of the frames. If it ends with /, a new folder is created in it. "
                         "Empty: SCENE.OBJECT.cache next to the scene; for a scene that was never "
                         "saved, a new folder in the cache folder of the preferences");
  Flag CACHE_LOCK = flag(1376, "CACHE_LOCK", false,
                         "Protect the cache: no run and no simulating render writes into it")
                        .still();
  Flag CACHE_SOLID = flag(1266, "CACHE_SOLID", true, "Store the distance to solids in the cache")
                         .still()
                         .changes(Changes::kFrames);
  Flag MASK_SOLID = flag(1350, "MASK_SOLID", false,
                         "Extend the gas into solids in the cached frames, so that no seam shows "
                         "around them")
                        .changes(Changes::kFrames);
  Flag COMPRESS_CACHE = flag(1032, "COMPRESS_CACHE", false,
                             "Compress frames better: smaller files, more time to write them")
                            .still();
  Flag CACHE_SYNC = flag(1420, "CACHE_SYNC", true,
                         "Wait for the disk after each frame, so that finished frames survive a "
                         "power failure; off: faster on slow disks")
                        .still();
  Flag LOAD_STATE =
      flag(1118, "LOAD_STATE", false, "Start from the state in state_file; otherwise from nothing")
          .still();
  File STATE_FILE = file(1119, "STATE_FILE", "Frame file with the state to start from")
                        .enabled_if(on(LOAD_STATE));
  Flag STATE_CONTINUE_TIME = flag(1120, "STATE_CONTINUE_TIME", true,
                                  "A run from a state continues at the time of the state; "
                                  "otherwise it starts at the first frame of its range")
                                 .still()
                                 .enabled_if(on(LOAD_STATE));
  Whole SAVE_STATE_EVERY =
      whole(1421, "SAVE_STATE_EVERY", 0, 0, 1e6,
            "Number of frames between saved states. An interrupted run can "
            "continue from the last one; 0: only the state at the end is saved")
          .still();
  Flag SIMULATE_ON_RENDER = flag(1074, "SIMULATE_ON_RENDER", false,
                                 "A render of several frames simulates each frame before drawing "
                                 "it")
                                .still();
  Whole FRAME_STRIDE = whole(1359, "FRAME_STRIDE", 1, -1e6, 1e6,
                             "Cached frames per frame of the document: 2 plays at double speed, -1 "
                             "backwards")
                           .changes(Changes::kPicture);
  Whole FRAME_OFFSET = whole(1279, "FRAME_OFFSET", 0, -1e7, 1e7,
                             "Number of frames by which the cached animation is delayed")
                           .changes(Changes::kPicture);
  Whole VERSION = whole(1151, "VERSION", kVolumeParametersVersion, 0, kVolumeParametersVersion,
                        "Version of the set of parameters; older documents are converted")
                      .still()
                      .changes(Changes::kView);
};

struct UpresParameters : VolumeGroup {
  UpresParameters() : VolumeGroup(Changes::kDetail) {}

  Flag SHOW_UPRES = flag(1422, "SHOW_UPRES", false,
                         "Show the frames of the up-resolution run, which are in the folder with "
                         "\" upres\" after its name; otherwise those of the simulation")
                        .changes(Changes::kPicture);
  Whole UPRES_FACTOR = whole(1363, "UPRES_FACTOR", 2, 1, 64,
                             "Voxels of an up-resolution run per voxel of the cache and axis: 2 "
                             "gives 8 times as many voxels")
                           .still();
  Real UPRES_NOISE = real(1365, "UPRES_NOISE", 3, -kUnbounded, kUnbounded, "%",
                          "Strength of the detail that an up-resolution run adds; 0: the same "
                          "motion with sharper smoke");
  Real UPRES_PERSISTENCE = real(1366, "UPRES_PERSISTENCE", 0.56, 0, 1, "",
                                "Strength of detail relative to detail of twice the size");
  Whole UPRES_EXTRA_BANDS =
      whole(1402, "UPRES_EXTRA_BANDS", 0, 0, 64,
            "Number of larger sizes of detail that are added too, each twice the size of the one "
            "before; 0: only detail smaller than the voxels of the cache");
};

}  // namespace nbx
