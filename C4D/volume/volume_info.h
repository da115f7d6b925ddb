// What the panel of a volume object shows of its cache.
#pragma once

#include "cache/bfs.h"
#include "host/interface/scene.h"

namespace nbx {

/// Sets `value` for the fields of InfoParameters, from the cached frame at the document's time:
/// empty texts and false without such a frame or without a store. While TIME_MODE selects a range
/// of the document, OVOLUME.TIME_END is the end of that range. False for any other id, with `value`
/// unchanged. A frame that can't be read is logged.
bool info_field(host::ParameterValue& value, std::int32_t id, const host::BaseObject& volume,
                const std::shared_ptr<BFS>& store);

}  // namespace nbx
