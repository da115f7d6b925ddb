#include "util/log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QString>
#include <chrono>
#include <fstream>
#include <iomanip>
#include <mutex>

#include "util/settings.h"

namespace nbx {

namespace {

using Clock = std::chrono::steady_clock;
const Clock::time_point load_time = Clock::now();

struct Log {
  std::mutex mutex;
  std::ofstream stream;
  std::string path;  // of the open stream
};

// Never destroyed, since destructors of other static objects may still log.
Log& log() {
  static Log& instance = *new Log;
  return instance;
}

// In the folder beside the user's settings file that is named after the organization.
QString default_file() {
  const QSettings settings(QSettings::IniFormat, QSettings::UserScope, kLogOrganization, QString());
  const QFileInfo file(settings.fileName());
  return file.absolutePath() + "/" + file.baseName() + "/nimbrix.log";
}

// Under the log's mutex.
void open_default_unless_open(Log& log) {
  if (log.stream.is_open()) return;
  const QString file = default_file();
  QDir().mkpath(QFileInfo(file).path());
  log.path = QFile::encodeName(file).toStdString();
  log.stream.open(log.path, std::ios::trunc);
}

}  // namespace

LogMessage::~LogMessage() {
  // If the log can't be written because disk or memory is full, that isn't the caller's error.
  try {
    const std::chrono::duration<double> seconds = Clock::now() - load_time;
    std::ostringstream line;
    line << '[' << std::setw(7) << std::fixed << std::setprecision(3) << seconds.count() << "] "
         << str() << '\n';
    Log& log = nbx::log();
    const std::lock_guard lock(log.mutex);
    open_default_unless_open(log);
    log.stream.clear();  // a full disk may have room again
    log.stream << line.str() << std::flush;
  } catch (...) {
  }
}

std::ostream& operator<<(std::ostream& out, const QString& text) {
  return out << text.toStdString();
}

bool set_log_file(const std::string& path) {
  Log& log = nbx::log();
  const std::lock_guard lock(log.mutex);
  std::ofstream stream;
  if (!path.empty()) {
    stream.open(path, std::ios::trunc);
    if (!stream.is_open()) return false;
  }
  log.stream = std::move(stream);
  log.path = path;
  return true;
}

std::string log_file() {
  Log& log = nbx::log();
  const std::lock_guard lock(log.mutex);
  open_default_unless_open(log);
  return log.stream.is_open() ? log.path : std::string();
}

}  // namespace nbx
