#include "C4D/run/run_checks.h"

#include <QDir>
#include <QFileInfo>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_access.h"
#include "C4D/services/preferences.h"
#include "C4D/settings/volume_cache.h"
#include "cache/cache_directories.h"

namespace nbx {

namespace {

/// The same for two paths of one folder. Empty for a volume whose next run makes a folder.
QString identity(const host::BaseObject& volume) {
  const QFileInfo folder(QString::fromStdString(named_cache(volume)));
  if (folder.filePath().isEmpty()) return {};
  return folder.exists() ? folder.canonicalFilePath() : QDir::cleanPath(folder.absoluteFilePath());
}

const host::BaseObject* find_sharer(const host::BaseObject* first, const host::BaseObject& volume,
                                    const QString& cache) {
  for (; first; first = first->GetNext()) {
    if (!first->GetDeformMode()) continue;
    if (first != &volume && first->GetType() == kVolumeObject && identity(*first) == cache)
      return first;
    if (const auto* below = find_sharer(first->GetDown(), volume, cache)) return below;
  }
  return nullptr;
}

}  // namespace

std::string what_locks(const host::BaseObject& volume) {
  if (ParameterReader(volume)(OVOLUME.CACHE_LOCK)) return "cache_lock is on";
  const std::string directory = find_cache(volume);
  if (directory.empty() || !cache_locked(directory)) return {};
  return directory + " holds CacheLock.lck";
}

std::string what_shares_cache(const host::BaseObject& volume) {
  const QString cache = identity(volume);
  if (cache.isEmpty()) return {};
  const auto* other = find_sharer(volume.GetDocument().GetFirstObject(), volume, cache);
  if (!other) return {};
  return "its cache " + cache.toStdString() + " is also that of volume \"" + other->GetName() +
         "\": give each a cache_name of its own, or another name";
}

bool must_ask_about_cache(const host::BaseObject& volume) {
  return preference(PREF.ASK_AUTOSAVE) && has_autosave(volume);
}

bool move_to_new_cache(host::BaseObject& volume) {
  set_cache_dir_data(volume, {cache_dir_data(volume).base, ""});
  return !make_cache(volume).empty();
}

}  // namespace nbx
