// Where the program's files are.
#pragma once

#include <string>

namespace app {

/// The variable NIMBRIX_PLUGIN if it is set, for developers; else nimbrix.so beside the program, or
/// in ../lib/nimbrix. Throws std::runtime_error if there is none.
std::string FindPlugin();

/// The variable NIMBRIX_PREFERENCES if it is set, for tests and farms; else
/// nimbrix/preferences.json in the folder of the user's settings.
std::string PreferencesFile();

}  // namespace app
