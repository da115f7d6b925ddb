#include "C4D/parameters/post_effect_parameters.h"

#include "C4D/parameters/parameter_table.h"

namespace nbx {

host::ClassDescription post_effect_description() {
  using namespace table;
  return {"smoke",
          "How smoke and fire come into rendered pictures",
          {
              flag(VPVOLUME_GAMMA, "VPVOLUME_GAMMA", true,
                   "Hand colors to the host through the sRGB curve, as a renderer that doesn't "
                   "work in linear light wants them"),
              flag(VPVOLUME_ADAPTIVE, "VPVOLUME_ADAPTIVE", false,
                   "Step further where smoke and fire change little"),
              real(VPVOLUME_ADAPTIVE_THRESHOLD, "VPVOLUME_ADAPTIVE_THRESHOLD", 0, 0, kUnbounded, "",
                   "Change from step to step that counts as little"),
          }};
}

}  // namespace nbx
