#include "C4D/parameters/volume_parameter_groups.h"
#include "C4D/parameters/volume_shading_parameters.h"

namespace nbx {

using namespace table;

ParameterList cache_parameters() {
  auto version = still(whole(OVOLUME_VERSION, "OVOLUME_VERSION", kVolumeParametersVersion, 0,
                             kVolumeParametersVersion,
                             "Version of the set of parameters; older ones are converted"));
  return {
      file(OVOLUME_CACHE_NAME, "OVOLUME_CACHE_NAME",
           "Folder of the frames; with a / at the end a new one is made in it; empty: "
           "SCENE.OBJECT.cache beside the scene, or for a scene that was never saved a new one in "
           "the folder of the preferences"),
      still(flag(OVOLUME_CACHE_LOCK, "OVOLUME_CACHE_LOCK", false,
                 "The cache is finished: no run and no render that simulates writes into it")),
      still(flag(OVOLUME_CACHE_SOLID, "OVOLUME_CACHE_SOLID", true,
                 "Keep the distance to the solids in the frames")),
      flag(OVOLUME_MASK_SOLID, "OVOLUME_MASK_SOLID", false,
           "In the frames the gas goes on into solids, so that no seam shows around them"),
      still(flag(OVOLUME_COMPRESS_CACHE, "OVOLUME_COMPRESS_CACHE", false,
                 "Compress the frames of a run well: less disk, more time for the writer")),
      still(
          flag(OVOLUME_CACHE_SYNC, "OVOLUME_CACHE_SYNC", true,
               "Wait for the disk at each frame, so that finished frames survive a power failure; "
               "off: faster on slow disks")),
      still(flag(OVOLUME_LOAD_STATE, "OVOLUME_LOAD_STATE", false,
                 "Start from the state in state_file, else from nothing")),
      file(OVOLUME_STATE_FILE, "OVOLUME_STATE_FILE", "Frame file with the state to start from"),
      still(flag(OVOLUME_STATE_CONTINUE_TIME, "OVOLUME_STATE_CONTINUE_TIME", true,
                 "A run from a state goes on at the state's time; else it starts at its own")),
      still(
          whole(OVOLUME_SAVE_STATE_EVERY, "OVOLUME_SAVE_STATE_EVERY", 0, 0, 1e6,
                "Frames from one saved state to the next, so that a run that is cut off can go on "
                "from the last one; 0: only the state at the end is saved")),
      still(flag(OVOLUME_SIMULATE_ON_RENDER, "OVOLUME_SIMULATE_ON_RENDER", false,
                 "A render of several frames simulates them as it goes")),
      whole(OVOLUME_FRAME_STRIDE, "OVOLUME_FRAME_STRIDE", 1, -1e6, 1e6,
            "Cached frames for each frame of the document"),
      whole(OVOLUME_FRAME_OFFSET, "OVOLUME_FRAME_OFFSET", 0, -1e7, 1e7,
            "Frames by which the cached animation is shown later"),
      std::move(version),
  };
}

ParameterList upres_parameters() {
  return {
      later(still(whole(OVOLUME_UPRES_FACTOR, "OVOLUME_UPRES_FACTOR", 2, 1, 64,
                        "Voxels of an up-resolution run along the edge of one of the cache's"))),
      later(real(OVOLUME_UPRES_NOISE, "OVOLUME_UPRES_NOISE", 3, -kUnbounded, kUnbounded, "%",
                 "Strength of the detail that an up-resolution run adds")),
      later(real(OVOLUME_UPRES_PERSISTENCE, "OVOLUME_UPRES_PERSISTENCE", 0.56, 0, 1, "",
                 "Detail of one size over that of twice the size")),
      later(whole(OVOLUME_UPRES_EXTRA_BANDS, "OVOLUME_UPRES_EXTRA_BANDS", 0, 0, 64,
                  "Sizes of detail to add, beside those between the two resolutions")),
  };
}

}  // namespace nbx
