// Where the plug-in is.
#pragma once

#include <string>

namespace app {

/// The variable NIMBRIX_PLUGIN if it is set, for developers; else nimbrix.so beside the program, or
/// in ../lib/nimbrix. Throws std::runtime_error if there is none.
std::string FindPlugin();

}  // namespace app
