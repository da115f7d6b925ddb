#include "C4D/run/run_cache.h"

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/settings/volume_cache.h"
#include "util/whole_file.h"

namespace nbx {

std::shared_ptr<BFS> open_run_cache(host::BaseObject& volume) {
  const std::shared_ptr<BFS> cache = volume_cache(volume, true);
  if (!cache) return nullptr;
  const ParameterReader p(volume);
  cache->codec = p(OVOLUME.COMPRESS_CACHE) ? Codec::kPredictive : Codec::kRunLength;
  cache->sync = p(OVOLUME.CACHE_SYNC) ? Sync::kDisk : Sync::kNone;
  // The name of the cache's folder must last too.
  if (cache->sync == Sync::kDisk) sync_folder(folder_of(cache->directory()));
  return cache;
}

}  // namespace nbx
