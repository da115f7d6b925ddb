// Paths of the files that the program uses.
#pragma once

#include <string>

namespace app {

/// Path of the plug-in: the environment variable NIMBRIX_PLUGIN if it is set (for developers),
/// otherwise nimbrix.so next to the program or in ../lib/nimbrix. Throws std::runtime_error if
/// there is none.
std::string FindPlugin();

/// Path of the preferences: the environment variable NIMBRIX_PREFERENCES if it is set (for tests
/// and render farms), otherwise nimbrix/preferences.json in the folder of the user's settings.
std::string PreferencesFile();

}  // namespace app
