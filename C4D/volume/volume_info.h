// What the panel of a volume object tells of its cache.
#pragma once

#include "cache/bfs.h"
#include "host/interface/scene.h"

namespace nbx {

/// Sets `value` for the fields of VolumeInfoField, from the cached frame that the volume shows at
/// the document's time: empty texts and false where there is none, or no store. While the range of
/// frames is one of the document's, OVOLUME_TIME_END is that range's end. False for any other id,
/// with `value` as it was. A frame that can't be read costs a log line.
bool info_field(host::ParameterValue& value, std::int32_t id, const host::BaseObject& volume,
                const std::shared_ptr<BFS>& store);

}  // namespace nbx
