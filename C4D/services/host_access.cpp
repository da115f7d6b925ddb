#include "C4D/services/host_access.h"

#include "C4D/services/preferences.h"
#include "util/log.h"

namespace nbx {

namespace {

host::HostServices* the_host = nullptr;
std::string own_file;

const host::BaseContainer* preferences() {
  return the_host ? the_host->GetWorldPluginData(kPreferences) : nullptr;
}

}  // namespace

host::HostServices* host_services() { return the_host; }

void set_host_services(host::HostServices* services) { the_host = services; }

const std::string& plugin_file() { return own_file; }
void set_plugin_file(const std::string& path) { own_file = path; }

bool preference(const Parameter<bool>& line) {
  const host::BaseContainer* all = preferences();
  return all ? ParameterReader(*all)(line) : line.default_value;
}

void set_preference(const Parameter<bool>& line, bool value) {
  if (!the_host) return;
  const host::BaseContainer* before = preferences();
  host::BaseContainer all = before ? *before : host::BaseContainer();
  all.SetBool(line, value);
  the_host->SetWorldPluginData(kPreferences, all);
}

std::string preferred_cache_folder() {
  const host::BaseContainer* all = preferences();
  if (!all) LogMessage() << "Failed to get NBX prefs container";
  return all ? ParameterReader(*all)(PREF.CACHE_PATH).path : std::string();
}

void post_event(std::int32_t id, std::int32_t code, host::BaseContainer record) {
  if (the_host) the_host->SpecialEventAdd({id, code, std::move(record)});
}

}  // namespace nbx
