// The user's settings outside of the host: keys and values in a file of the user's own folder.
#pragma once

#include <memory>

class QSettings;

namespace nbx {

/// The folder of the log (log.h), beside the folder of the settings.
inline constexpr const char* kLogOrganization = "kelvra";
inline constexpr const char* kOrganization = "kelvra visual computing";
inline constexpr const char* kOrganizationDomain = "kelvra.example";
inline constexpr const char* kApplication = "Nimbrix Fluid Dynamics";

/// Sets Qt's names of organization, domain and application for the process.
void set_application_names();

/// A handle. Copies share one store, which is written at the latest when the last copy is
/// destroyed. If it can't be written, that is logged, and values last as long as the process. Each
/// feature chooses its own keys.
class Settings {
 public:
  Settings();
  QSettings& settings() const { return *settings_; }

 private:
  std::shared_ptr<QSettings> settings_;
};

}  // namespace nbx
