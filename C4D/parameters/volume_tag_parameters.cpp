#include "C4D/parameters/volume_tag_parameters.h"

namespace nbx {

const TagParameters TVOLUME;

host::ClassDescription volume_tag_description() {
  return {"emitter", "Makes an object and its children a source", TVOLUME.infos()};
}

}  // namespace nbx
