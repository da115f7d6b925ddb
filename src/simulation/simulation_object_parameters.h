// One source object in one substep, as the scene hands it to the simulation.
#pragma once

#include <map>
#include <set>

namespace nbx {

struct SimulationObjectParameters {
  std::map<int, double> amounts;  // by ChannelKey; a source's cells weigh them by 0 .. 1
  std::set<int> add_keys;         // keys whose amount is added; the others are set
};

}  // namespace nbx
