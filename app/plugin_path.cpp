#include "app/plugin_path.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace app {

std::string FindPlugin() {
  namespace fs = std::filesystem;
  if (const char* named = std::getenv("NIMBRIX_PLUGIN"); named && *named)
    return fs::absolute(named).string();
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const fs::path& place :
       {folder / "nimbrix.so", folder.parent_path() / "lib" / "nimbrix" / "nimbrix.so"})
    if (fs::is_regular_file(place, error)) return place.string();
  throw std::runtime_error(
      "the plug-in nimbrix.so is missing: it must be next to the program, in " + folder.string());
}

std::string PreferencesFile() {
  if (const char* named = std::getenv("NIMBRIX_PREFERENCES"); named && *named) return named;
  const char* const home = std::getenv("HOME");
  const char* const settings = std::getenv("XDG_CONFIG_HOME");
  const std::string folder = settings && *settings ? settings
                             : home && *home       ? std::string(home) + "/.config"
                                                   : std::string(".config");
  return folder + "/nimbrix/preferences.json";
}

}  // namespace app
