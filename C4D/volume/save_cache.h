// The cache of a volume in a project that is saved with its assets.
#pragma once

#include "host/interface/scene.h"

namespace nbx {

/// Copies the volume's cache, if it can be read, into the folder "nbx4d_caches" of the saved
/// project, and points the volume's parameter to the copy. A cache that lies in the project stays
/// where it is. After a failure, which `assets` notes, the parameter stays.
void save_cache(host::BaseObject& volume, host::SaveAssets& assets);

}  // namespace nbx
