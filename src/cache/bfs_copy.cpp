// Copies of a whole cache.
#include <QDir>
#include <QFile>

#include "cache/bfs.h"
#include "util/log.h"

namespace nbx {

bool BFS::copyDir(const std::string& target, const std::function<void(int, int)>& progress) {
  Lock lock(mutex_);
  if (!place().readable()) return false;
  finishWrites(lock);
  QDir to(QString::fromStdString(target));
  if (!to.mkpath(".")) {
    LogMessage() << "BFS::copyDir: Failed to create base dir " << target;
    return false;
  }
  const QString name = QDir(QString::fromStdString(directory_)).dirName();
  if (!to.mkpath(name) || !to.cd(name)) {
    LogMessage() << "BFS::copyDir: Failed to create cache dir " << name << " in " << target;
    return false;
  }
  return copyFiles(to.absolutePath().toStdString(), progress);
}

bool BFS::copyFiles(const std::string& folder,
                    const std::function<void(int, int)>& progress) const {
  const QDir from(QString::fromStdString(directory_)), to(QString::fromStdString(folder));
  const QString before = QString::fromStdString(prefix_);
  const QString after = QString::fromStdString(cache_prefix(folder));
  // States to go on from have notes beside them.
  const QStringList files = from.entryList({"*.bcf", "*SimState.json"}, QDir::Files, QDir::Name);
  int done = 0;
  for (const QString& file : files) {
    if (progress) progress(done++, static_cast<int>(files.size()));
    const QString name = file.startsWith(before) ? after + file.mid(before.size()) : file;
    const QString source = from.absoluteFilePath(file), destination = to.absoluteFilePath(name);
    if (!QFile::copy(source, destination)) {
      LogMessage() << "Failed to copy file " << source << " to " << destination;
      return false;
    }
  }
  if (progress) progress(done, done);
  return true;
}

}  // namespace nbx
