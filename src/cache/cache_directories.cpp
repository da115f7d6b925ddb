#include "cache/cache_directories.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include "cache/cache_registry.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr char kLockFile[] = "CacheLock.lck";
const QStringList kCacheFiles{"*.bcf", "*SimState.*", "StaleFrames.*", "CacheNotes.*", "*.c4d"};

QDir folder(const std::string& path) { return QDir(QString::fromStdString(path)); }

// Whether this is the name of a folder in a base, and not the base itself or a path elsewhere.
bool names_cache(const CacheDirData& data) {
  return !data.base.empty() && !data.name.empty() && data.name != "." && data.name != ".." &&
         data.name.find('/') == std::string::npos;
}

// Creates and enters the first folder of this name with a free number behind it.
bool enter_new(QDir& parent, const QString& stem, const char* what) {
  QString name;
  for (int i = 1; name.isEmpty() || parent.exists(name); ++i)
    name = stem + QString("%1").arg(i, 3, 10, QChar('0'));
  if (!parent.mkdir(name)) {
    LogMessage() << "Failed to create " << what << " " << parent.absolutePath() << " / " << name;
    return false;
  }
  if (!parent.cd(name)) {
    LogMessage() << "Failed to change to " << what << " " << name;
    return false;
  }
  return true;
}

bool enter_new_base(QDir& base, const std::string& preferred) {
  base = preferred.empty() ? QDir::home() : folder(preferred);
  if (!base.mkpath(".")) {
    LogMessage() << "FATAL: failed to create global cache base path " << base.absolutePath();
    return false;
  }
  return enter_new(base, "Nimbrix Caches ", "cache base dir");
}

}  // namespace

bool resolve_cache_dir(CacheDirData& data, std::string& dir, bool create,
                       const std::string& preferred) {
  QDir base = folder(data.base);
  const bool has_base = !data.base.empty() && base.exists();
  if (has_base && !data.name.empty()) {
    QDir here = base;
    if (here.cd(QString::fromStdString(data.name))) {
      dir = here.absolutePath().toStdString();
      return true;
    }
  }
  if (!create) return false;
  if (!has_base && !enter_new_base(base, preferred)) return false;
  QDir made = base;
  if (!enter_new(made, "Cache ", "cache dir")) return false;
  data = {base.absolutePath().toStdString(), made.dirName().toStdString()};
  dir = made.absolutePath().toStdString();
  return true;
}

bool cache_locked(const std::string& directory) { return folder(directory).exists(kLockFile); }

bool set_cache_lock(const std::string& directory, bool on) {
  QFile lock(folder(directory).absoluteFilePath(kLockFile));
  if (on) {
    if (lock.open(QFile::WriteOnly)) return true;
    LogMessage() << "Failed to create cache lock " << lock.fileName();
    return false;
  }
  if (!lock.exists() || lock.remove()) return true;
  LogMessage() << "Failed to remove cache lock " << lock.fileName();
  return false;
}

std::vector<CacheListEntry> list_caches(const std::string& base) {
  std::vector<CacheListEntry> caches;
  if (base.empty()) return caches;
  for (const QFileInfo& entry :
       folder(base).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
    const QDir cache(entry.absoluteFilePath());
    const QFileInfoList files = cache.entryInfoList({"*.bcf"}, QDir::Files);
    if (!cache.isReadable() || files.isEmpty()) continue;
    CacheListEntry listed{entry.fileName().toStdString(), 0};
    for (const QFileInfo& file : files) listed.bytes += file.size();
    caches.push_back(listed);
  }
  return caches;
}

std::vector<std::string> foreign_files(const std::string& directory) {
  const QDir cache = folder(directory);
  const QStringList own = cache.entryList(kCacheFiles, QDir::Files);
  std::vector<std::string> foreign;
  for (const QString& entry :
       cache.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
    if (!own.contains(entry) && entry != kLockFile) foreign.push_back(entry.toStdString());
  return foreign;
}

std::string make_cache_beside(const std::string& directory) {
  static const QRegularExpression ending("\\.(cache|[0-9]{3,})$");
  QDir made = folder(directory);
  const QString stem = made.dirName().remove(ending) + ".";
  const bool entered = made.cdUp() && enter_new(made, stem, "cache dir");
  return entered ? made.absolutePath().toStdString() : std::string();
}

bool rename_cache(CacheDirData& data, const std::string& name) {
  QDir base = folder(data.base);
  const auto path = [&base](const std::string& part) {
    return base.absoluteFilePath(QString::fromStdString(part)).toStdString();
  };
  const auto store = CacheRegistry::instance().find(path(data.name));
  if (store) store->removeAllSlots();
  const QString from = QString::fromStdString(data.name), to = QString::fromStdString(name);
  if (!names_cache(data) || !names_cache({data.base, name}) || !base.rename(from, to)) {
    LogMessage() << "Failed to rename cache dir";
    return false;
  }
  CacheRegistry::instance().move(path(data.name), path(name));
  data.name = name;
  return true;
}

bool remove_cache(const CacheDirData& data) {
  QDir cache = folder(data.base);
  const QString path = cache.absoluteFilePath(QString::fromStdString(data.name));
  bool removed =
      names_cache(data) && cache.cd(QString::fromStdString(data.name)) && !cache.exists(kLockFile);
  if (removed) {
    CacheRegistry::instance().move(path.toStdString(), "");
    for (const QString& file : cache.entryList(kCacheFiles, QDir::Files))
      removed = cache.remove(file) && removed;
    removed = removed && QDir().rmdir(cache.absolutePath());
  }
  if (!removed) LogMessage() << "Failed to remove cache dir " << path;
  return removed;
}

}  // namespace nbx
