// The user's preferences, kept by the host in a container of their own.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

inline constexpr std::int32_t kPreferences = 1024510;

enum Preference : std::int32_t {
  PREF_CACHE_PATH = 1000,
  PREF_AUTOSAVE = 1001,
  PREF_UPDATE_CHECK = 1002,
  PREF_MODE = 1003,
  PREF_ASK_AUTOSAVE = 1007,
  PREF_VIEWPORT_GL = 1008,
};

/// Values of PREF_MODE.
inline constexpr std::int32_t PREF_MODE_STANDARD = 1004;

host::ClassDescription preferences_description();
bool register_preferences(host::HostServices& services, const std::string& name);

}  // namespace nbx
