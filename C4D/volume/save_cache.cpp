#include "C4D/volume/save_cache.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/texts.h"
#include "C4D/settings/volume_cache.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr char kCaches[] = "nbx4d_caches";

/// The first of "smoke", "smoke 2" ... in the folder that is free.
template <class IsFree>
CacheDirData free_place(const std::string& base, const std::string& name, IsFree is_free) {
  CacheDirData place{base, name};
  for (int n = 2; !is_free(base + "/" + place.name); ++n)
    place.name = name + " " + std::to_string(n);
  return place;
}

bool is_taken(const host::SaveAssets& assets, const std::string& folder) {
  return std::any_of(assets.copies.begin(), assets.copies.end(),
                     [&folder](const auto& copy) { return copy.second == folder; });
}

/// The volume has no frames yet: its parameter then names a folder in the project.
void save_empty_cache(host::BaseObject& volume, const QDir& project, host::SaveAssets& assets) {
  const std::string named = named_cache(volume);
  const std::string base = project.absoluteFilePath(kCaches).toStdString();
  if (cache_dir_data(volume).base.empty() || named.empty()) return;
  const auto [copy, is_new] = assets.copies.try_emplace(named);
  if (is_new) {
    const CacheDirData place =
        free_place(base, cache_dir_data(volume).name, [&](const std::string& folder) {
          return !is_taken(assets, folder) && !QFileInfo::exists(QString::fromStdString(folder));
        });
    copy->second = place.base + "/" + place.name;
  }
  volume.GetDataInstance().SetFilename(OVOLUME.CACHE_NAME, {copy->second});
}

}  // namespace

void save_cache(host::BaseObject& volume, host::SaveAssets& assets) {
  const QDir project(QString::fromStdString(assets.folder.path));
  const auto store = volume_cache(volume, false);
  if (!store) return save_empty_cache(volume, project, assets);
  const std::string source = store->directory(), name = volume.GetName();
  if (source.starts_with(project.absolutePath().toStdString() + "/")) return;
  const auto copied = assets.copies.find(source);
  if (copied != assets.copies.end()) {
    volume.GetDataInstance().SetFilename(OVOLUME.CACHE_NAME, {copied->second});
    return;
  }
  const CacheDirData copy = free_place(
      project.absoluteFilePath(kCaches).toStdString(),
      QDir(QString::fromStdString(source)).dirName().toStdString(), [&](const std::string& folder) {
        return !is_taken(assets, folder) && store->copy_fits(folder);
      });
  if (!project.mkpath(kCaches)) {
    LogMessage() << "Failed to create cache directory in " << assets.folder.path;
    assets.failures.push_back("volume \"" + name + "\": " + texts::kNoCacheFolder.title + ": " +
                              texts::kNoCacheFolder.text + " (" + copy.base + ")");
  } else if (!store->copyDir(copy.base, assets.progress, copy.name)) {
    assets.failures.push_back("volume \"" + name + "\": the cache " + source +
                              " can't be copied to " + copy.base);
  } else {
    assets.copies[source] = copy.base + "/" + copy.name;
    set_cache_dir_data(volume, copy);
  }
}

}  // namespace nbx
