#include "C4D/parameters/volume_parameters.h"

namespace nbx {

const VolumeParameters OVOLUME;

host::ClassDescription volume_description() {
  return {"volume", "The container of one simulation: its domain, physics, cache and look",
          OVOLUME.infos()};
}

}  // namespace nbx
