#include "C4D/services/preferences.h"

namespace nbx {

host::ClassDescription preferences_description() {
  return {"preferences", "Settings of the user for all scenes", PREF.infos()};
}

bool register_preferences(host::HostServices& services, const std::string& name) {
  return services.RegisterPreferencePlugin(kPreferences, name, preferences_description());
}

}  // namespace nbx
