// The user's preferences, which the host keeps in a container of their own.
#pragma once

#include "C4D/parameters/parameter_group.h"
#include "host/interface/plugin.h"

namespace nbx {

inline constexpr std::int32_t kPreferences = 1024510;

/// Values of MODE.
enum PreferenceMode : std::int32_t { PREF_MODE_STANDARD = 1004 };

struct PreferenceParameters : ParameterGroup {
  PreferenceParameters() : ParameterGroup("PREF", Changes::kRun) {}

  File CACHE_PATH =
      file(1000, "CACHE_PATH", "Folder in which new caches are made; empty: the home folder");
  Flag AUTOSAVE =
      flag(1001, "AUTOSAVE", true, "Save the scene into the cache before a run").still();
  Flag ASK_AUTOSAVE =
      flag(1007, "ASK_AUTOSAVE", true, "Ask before a run overwrites a saved scene and its cache")
          .still();
  Flag UPDATE_CHECK =
      flag(1002, "UPDATE_CHECK", true, "Look for a newer version once a day").still().later();
  Flag VIEWPORT_GL =
      flag(1008, "VIEWPORT_GL", false, "Show cached frames in the viewport").still().later();
  Choice<PreferenceMode> MODE = cycle(1003, "MODE", PREF_MODE_STANDARD,
                                      {{PREF_MODE_STANDARD, "standard"}}, "Mode of the program")
                                    .still()
                                    .later();
};

inline const PreferenceParameters PREF;

host::ClassDescription preferences_description();
bool register_preferences(host::HostServices& services, const std::string& name);

}  // namespace nbx
