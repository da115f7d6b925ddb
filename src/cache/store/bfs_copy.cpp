// Copies of a whole cache.
#include <QDir>
#include <QFile>
#include <algorithm>

#include "cache/store/frame_table.h"
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

// Frames, states and their notes.
QStringList cache_files(const QDir& folder) {
  return folder.entryList({"*.bcf", "*.json"}, QDir::Files, QDir::Name);
}

// The name that a file has under another prefix.
QString renamed(const QString& file, const QString& before, const QString& after) {
  return file.startsWith(before) ? after + file.mid(before.size()) : file;
}

// What a copy in another folder needs: both folders and the prefixes of their files.
struct Copy {
  Copy(const std::string& source, const std::string& prefix, const std::string& target)
      : from(QString::fromStdString(source)),
        to(QString::fromStdString(target)),
        before(QString::fromStdString(prefix)),
        after(QString::fromStdString(cache_prefix(target))) {}
  QDir from, to;
  QString before, after;
};

Outcome failure(const QString& text) {
  LogMessage() << text;
  return Outcome::failure(text.toStdString());
}

Outcome copy_files(const Copy& copy, const std::function<void(int, int)>& progress) {
  const QStringList files = cache_files(copy.from);
  int done = 0;
  for (const QString& file : files) {
    if (progress) progress(done++, static_cast<int>(files.size()));
    const QString source = copy.from.absoluteFilePath(file);
    const QString target = copy.to.absoluteFilePath(renamed(file, copy.before, copy.after));
    if (!same_bytes(source, target) && !QFile::copy(source, target))
      return failure("Failed to copy file " + source + " to " + target);
  }
  if (progress) progress(done, done);
  return Outcome::success();
}

}  // namespace

Outcome BFS::copyDir(const std::string& target, const std::function<void(int, int)>& progress,
                     const std::string& as) {
  Table::Lock lock(table_->mutex);
  const Table::Place place = table_->place();
  if (!place.readable()) return Outcome::failure("the cache directory can't be read");
  if (!table_->finish_writes(lock))
    return failure("frames wait to be saved: " + QString::fromStdString(table_->last_error));
  const QString base = QString::fromStdString(target);
  QDir to(base);
  if (!to.mkpath(".")) return failure("BFS::copyDir: Failed to create base dir " + base);
  const QString name = as.empty() ? QDir(QString::fromStdString(place.directory)).dirName()
                                  : QString::fromStdString(as);
  if (!to.mkpath(name) || !to.cd(name))
    return failure("BFS::copyDir: Failed to create cache dir " + name + " in " + base);
  return copy_files({place.directory, place.prefix, to.absolutePath().toStdString()}, progress);
}

bool BFS::copy_fits(const std::string& folder) {
  Table::Lock lock(table_->mutex);
  if (!table_->finish_writes(lock)) return false;
  const Copy copy(table_->directory, table_->prefix, folder);
  const QStringList there = cache_files(copy.to);
  return std::all_of(there.begin(), there.end(), [&](const QString& file) {
    return same_bytes(copy.from.absoluteFilePath(renamed(file, copy.after, copy.before)),
                      copy.to.absoluteFilePath(file));
  });
}

}  // namespace nbx
