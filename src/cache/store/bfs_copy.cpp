// Copies of a whole cache.
#include <QDir>
#include <QFile>
#include <algorithm>

#include "cache/bfs.h"
#include "util/log.h"

namespace nbx {

namespace {

bool same_bytes(const QString& a, const QString& b) {
  QFile first(a), second(b);
  if (!first.open(QFile::ReadOnly) || !second.open(QFile::ReadOnly)) return false;
  if (first.size() != second.size()) return false;
  constexpr qint64 kBlock = 1 << 20;
  while (!first.atEnd())
    if (first.read(kBlock) != second.read(kBlock)) return false;
  return true;
}

// Frames, states and what is noted of them.
QStringList cache_files(const QDir& folder) {
  return folder.entryList({"*.bcf", "*.json"}, QDir::Files, QDir::Name);
}

// The name that a file has under another prefix.
QString renamed(const QString& file, const QString& before, const QString& after) {
  return file.startsWith(before) ? after + file.mid(before.size()) : file;
}

}  // namespace

bool BFS::copyDir(const std::string& target, const std::function<void(int, int)>& progress,
                  const std::string& as) {
  Lock lock(mutex_);
  if (!place().readable()) return false;
  finish_writes(lock);
  QDir to(QString::fromStdString(target));
  if (!to.mkpath(".")) {
    LogMessage() << "BFS::copyDir: Failed to create base dir " << target;
    return false;
  }
  const QString name =
      as.empty() ? QDir(QString::fromStdString(directory_)).dirName() : QString::fromStdString(as);
  if (!to.mkpath(name) || !to.cd(name)) {
    LogMessage() << "BFS::copyDir: Failed to create cache dir " << name << " in " << target;
    return false;
  }
  return copy_files(to.absolutePath().toStdString(), progress);
}

bool BFS::copy_files(const std::string& folder,
                     const std::function<void(int, int)>& progress) const {
  const QDir from(QString::fromStdString(directory_)), to(QString::fromStdString(folder));
  const QString before = QString::fromStdString(prefix_);
  const QString after = QString::fromStdString(cache_prefix(folder));
  const QStringList files = cache_files(from);
  int done = 0;
  for (const QString& file : files) {
    if (progress) progress(done++, static_cast<int>(files.size()));
    const QString source = from.absoluteFilePath(file);
    const QString destination = to.absoluteFilePath(renamed(file, before, after));
    if (!same_bytes(source, destination) && !QFile::copy(source, destination)) {
      LogMessage() << "Failed to copy file " << source << " to " << destination;
      return false;
    }
  }
  if (progress) progress(done, done);
  return true;
}

bool BFS::copy_fits(const std::string& folder) {
  Lock lock(mutex_);
  finish_writes(lock);
  const QDir from(QString::fromStdString(directory_)), to(QString::fromStdString(folder));
  const QString before = QString::fromStdString(prefix_);
  const QString after = QString::fromStdString(cache_prefix(folder));
  const QStringList there = cache_files(to);
  return std::all_of(there.begin(), there.end(), [&](const QString& file) {
    return same_bytes(from.absoluteFilePath(renamed(file, after, before)),
                      to.absoluteFilePath(file));
  });
}

}  // namespace nbx
