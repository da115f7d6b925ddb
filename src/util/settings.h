// The user's settings outside of the host: a store of keys and values in the user's own folder.
#pragma once

#include <memory>

class QSettings;

namespace nbx {

inline constexpr const char* kOrganization = "kelvra visual computing";
inline constexpr const char* kOrganizationDomain = "kelvra.example";
inline constexpr const char* kApplication = "Nimbrix Fluid Dynamics";

/// Tells Qt the three names above; they hold for the process.
void set_application_names();

/// A handle; copies share one store, which is written at the latest when the last of them goes.
/// Where it can't be written that is logged, and values last as long as the process. Features
/// choose their keys themselves.
class Settings {
 public:
  Settings();
  QSettings& settings() const { return *settings_; }

 private:
  std::shared_ptr<QSettings> settings_;
};

}  // namespace nbx
