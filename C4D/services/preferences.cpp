#include "C4D/services/preferences.h"

#include "C4D/parameters/parameter_table.h"

namespace nbx {

host::ClassDescription preferences_description() {
  using namespace table;
  return {"preferences",
          "What the user prefers in all scenes",
          {
              file(PREF_CACHE_PATH, "PREF_CACHE_PATH",
                   "Folder in which new caches are made; empty: the home folder"),
              still(flag(PREF_AUTOSAVE, "PREF_AUTOSAVE", true,
                         "Save the scene into the cache before a run")),
              still(flag(PREF_ASK_AUTOSAVE, "PREF_ASK_AUTOSAVE", true,
                         "Ask before a run overwrites a saved scene and its cache")),
              later(still(flag(PREF_UPDATE_CHECK, "PREF_UPDATE_CHECK", true,
                               "Look for a newer version once a day"))),
              later(still(flag(PREF_VIEWPORT_GL, "PREF_VIEWPORT_GL", false,
                               "Show cached frames in the viewport"))),
              later(still(cycle(PREF_MODE, "PREF_MODE", PREF_MODE_STANDARD,
                                {{PREF_MODE_STANDARD, "standard"}}, "Kept for later use"))),
          }};
}

bool register_preferences(host::HostServices& services, const std::string& name) {
  return services.RegisterPreferencePlugin(kPreferences, name, preferences_description());
}

}  // namespace nbx
