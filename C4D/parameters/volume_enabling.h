// Which parameters of a volume object count, given the others.
#pragma once

#include "host/interface/scene.h"

namespace nbx {

/// False for a parameter that has no effect while the others are as they are: those of a channel
/// that isn't simulated, of a shader without a channel, of a mode that isn't chosen.
bool volume_parameter_enabled(const host::BaseList2D& volume, std::int32_t id);

}  // namespace nbx
