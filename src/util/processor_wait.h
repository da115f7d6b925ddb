// How much other programs hold this one up.
#pragma once

#include <optional>

namespace nbx {

/// The seconds that threads of this process have waited for a processor while they could run: the
/// sum over the threads that exist, save the one that asks. Nothing if the system doesn't count
/// them.
std::optional<double> processor_wait();

}  // namespace nbx
