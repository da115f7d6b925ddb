#include "util/settings.h"

#include <QCoreApplication>
#include <QSettings>

#include "util/log.h"

namespace nbx {

void set_application_names() {
  QCoreApplication::setOrganizationName(kOrganization);
  QCoreApplication::setOrganizationDomain(kOrganizationDomain);
  QCoreApplication::setApplicationName(kApplication);
}

Settings::Settings() {
  set_application_names();
  settings_ = std::make_shared<QSettings>(QSettings::UserScope, kOrganization, kApplication);
  if (!settings_->isWritable())
    LogMessage() << "ERROR: user scope settings not writable " << settings_->fileName();
}

}  // namespace nbx
