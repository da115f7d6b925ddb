#include "C4D/run/run_checks.h"

#include <QDir>
#include <QFileInfo>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_access.h"
#include "C4D/services/preferences.h"
#include "C4D/services/texts.h"
#include "C4D/settings/volume_cache.h"
#include "cache/cache_directories.h"

namespace nbx {

namespace {

bool is_in_tree(const host::BaseObject* first, const host::BaseObject& wanted) {
  for (; first; first = first->GetNext())
    if (first == &wanted || is_in_tree(first->GetDown(), wanted)) return true;
  return false;
}

/// Equal for two paths of one folder. Empty if the volume's next run will make a new folder.
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

Outcome check_unlocked(const host::BaseObject& volume, bool upres) {
  if (!upres && ParameterReader(volume)(OVOLUME.CACHE_LOCK))
    return Outcome::failure("cache_lock is on");
  const std::string directory = find_cache(volume);
  if (directory.empty() || !cache_locked(directory)) return Outcome::success();
  return Outcome::failure(directory + " holds CacheLock.lck");
}

Outcome check_can_run(const host::BaseObject* volume, bool upres) {
  if (!volume) return Outcome::failure("aborting prepare_sim: volobj = NULL");
  if (!is_in_tree(volume->GetDocument().GetFirstObject(), *volume))
    return Outcome::failure("Simulation aborted!");
  const Outcome unlocked = check_unlocked(*volume, upres);
  return unlocked ? unlocked : Outcome::failure("the cache is locked: " + unlocked.reason());
}

Outcome check_own_cache(const host::BaseObject& volume) {
  const QString cache = identity(volume);
  if (cache.isEmpty()) return Outcome::success();
  const auto* other = find_sharer(volume.GetDocument().GetFirstObject(), volume, cache);
  if (!other) return Outcome::success();
  return Outcome::failure("its cache " + cache.toStdString() + " is also that of volume \"" +
                          other->GetName() + "\": give each its own cache_name, or rename one");
}

bool must_ask_about_cache(const host::BaseObject& volume) {
  return preference(PREF.ASK_AUTOSAVE) && has_autosave(volume);
}

bool make_room(host::BaseObject& volume, RunFrontEnd& front_end, std::optional<int> frame_before,
               const std::string& later_frames) {
  const OldCache choice = front_end.ask_about_cache(
      {texts::kCacheHoldsRun.title, texts::kCacheHoldsRun.text, frame_before, later_frames});
  if (choice == OldCache::kMakeNew) return take_new_cache(volume, front_end);
  return choice == OldCache::kOverwrite;
}

bool take_new_cache(host::BaseObject& volume, RunFrontEnd& front_end) {
  if (!make_new_cache(volume).empty()) return true;
  front_end.refuse(texts::kNoCacheFolder.title, texts::kNoCacheFolder.text);
  return false;
}

}  // namespace nbx
