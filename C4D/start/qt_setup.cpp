#include "C4D/start/qt_setup.h"

#include <QCoreApplication>
#include <QStringList>
#include <clocale>
#include <memory>
#include <string>

#include <dlfcn.h>

#include "util/log.h"
#include "util/settings.h"

namespace nbx {

namespace {

std::unique_ptr<QCoreApplication> application;

void log_qt(QtMsgType, const QMessageLogContext&, const QString& text) {
  LogMessage() << "Qt: " << text;
}

void pin_module() {
  Dl_info info{};
  if (!dladdr(reinterpret_cast<const void*>(&set_up_qt), &info) ||
      !dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE))
    LogMessage() << "Failed to pin plugin module!";
}

}  // namespace

void set_up_qt() {
  set_application_names();
  pin_module();
  if (QCoreApplication::instance()) return;
  QCoreApplication::setLibraryPaths({});
  qInstallMessageHandler(log_qt);
  // The application sets the user's locale, but scenes are read and written in the host's.
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  static char name[] = "nimbrix";
  static char* arguments[] = {name, nullptr};
  static int count = 1;
  application = std::make_unique<QCoreApplication>(count, arguments);
  QCoreApplication::setLibraryPaths({});  // the constructor has added the program's folder
  std::setlocale(LC_ALL, locale.c_str());
}

void tear_down_qt() {
  if (!application) return;
  application.reset();
  qInstallMessageHandler(nullptr);
}

}  // namespace nbx
