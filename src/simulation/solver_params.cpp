#include "simulation/solver_params.h"

namespace nbx {

SolverParams::SolverParams() {
  for (int key : {kFuel, kBurn, kDensity, kTemperature})
    channel_params[key] = default_channel_params(key);
}

}  // namespace nbx
