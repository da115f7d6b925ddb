// Where the frames of a run go. Set before the run starts.
#pragma once

#include <memory>
#include <set>

#include "cache/bfs.h"

namespace nbx {

struct FrameSink {
  std::shared_ptr<BFS> target_cache;  // may be empty: frames are then not stored
  bool cache_direct = false;          // each frame is on disk before the run continues
  std::set<int> cached_channels;      // ChannelKeys that frames hold
};

}  // namespace nbx
