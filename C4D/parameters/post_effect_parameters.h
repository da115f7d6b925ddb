// The parameters of the post effect that draws smoke and fire in the host's renders.
#pragma once

#include "host/interface/parameter_info.h"

namespace nbx {

inline constexpr std::int32_t kPostEffect = 1023164;

enum PostEffectParameter : std::int32_t {
  VPVOLUME_GAMMA = 1001,
  VPVOLUME_ADAPTIVE = 1003,
  VPVOLUME_ADAPTIVE_THRESHOLD = 1004,
};

host::ClassDescription post_effect_description();

}  // namespace nbx
