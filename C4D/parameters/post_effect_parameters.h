// The table of parameters of the post effect that draws smoke and fire in the host's renders.
#pragma once

#include "C4D/parameters/parameter_group.h"

namespace nbx {

inline constexpr std::int32_t kPostEffect = 1023164;

struct PostEffectParameters : ParameterGroup {
  PostEffectParameters() : ParameterGroup("VPVOLUME", Changes::kPicture) {}

  Flag GAMMA = flag(1001, "GAMMA", true,
                    "Encode colors with the sRGB curve, for renderers that don't work in linear "
                    "light");
  Flag ADAPTIVE =
      flag(1003, "ADAPTIVE", false, "Take longer steps where smoke and fire change little: faster");
  Real ADAPTIVE_THRESHOLD = real(1004, "ADAPTIVE_THRESHOLD", 0, 0, kUnbounded, "",
                                 "Largest change from step to step that counts as little: higher "
                                 "values are faster and less accurate")
                                .enabled_if(on(ADAPTIVE));
};

inline const PostEffectParameters VPVOLUME;

inline host::ClassDescription post_effect_description() {
  return {"smoke", "How smoke and fire are drawn in rendered pictures", VPVOLUME.infos()};
}

}  // namespace nbx
