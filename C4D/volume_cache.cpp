#include "C4D/volume_cache.h"

#include <QDir>
#include <QFileInfo>

#include "C4D/host_access.h"
#include "C4D/preferences.h"
#include "C4D/volume_parameters.h"
#include "C4D/volume_shading_parameters.h"
#include "cache/cache_registry.h"
#include "util/log.h"

namespace nbx {

CacheDirData cache_dir_data(const host::BaseObject& volume) {
  const host::Filename named = volume.GetDataInstance().GetFilename(OVOLUME_CACHE_NAME);
  const std::string path = volume.GetDocument().Resolve(named).path;
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return {};
  return {path.substr(0, std::max<std::size_t>(slash, 1)), path.substr(slash + 1)};
}

void set_cache_dir_data(host::BaseObject& volume, const CacheDirData& data) {
  volume.GetDataInstance().SetFilename(
      OVOLUME_CACHE_NAME, {data.base.empty() ? std::string() : data.base + "/" + data.name});
}

std::string named_cache(const host::BaseObject& volume) {
  const CacheDirData data = cache_dir_data(volume);
  if (!data.base.empty()) return data.name.empty() ? std::string() : data.base + "/" + data.name;
  const host::BaseDocument& document = volume.GetDocument();
  if (document.GetDocumentPath().path.empty()) return {};
  const QFileInfo file(QString::fromStdString(document.GetDocumentName()));
  QString object = QString::fromStdString(volume.GetName());
  object.replace('/', '_');
  const QDir folder(QString::fromStdString(document.GetDocumentPath().path));
  return folder.filePath(file.completeBaseName() + "." + object + ".cache").toStdString();
}

std::string cache_directory(host::BaseObject& volume, bool create) {
  if (!create && cache_dir_data(volume).base.empty()) {
    const std::string beside = named_cache(volume);
    return QFileInfo(QString::fromStdString(beside)).isDir() ? beside : std::string();
  }
  CacheDirData data = cache_dir_data(volume);
  const CacheDirData before = data;
  std::string directory;
  const bool unset = data.base.empty() && create;
  if (!resolve_cache_dir(data, directory, create, unset ? preferred_cache_folder() : "")) return {};
  if (!(data == before)) set_cache_dir_data(volume, data);
  return directory;
}

std::string existing_cache_directory(const host::BaseObject& volume) {
  CacheDirData data = cache_dir_data(volume);
  std::string directory;
  return resolve_cache_dir(data, directory, false, "") ? directory : std::string();
}

std::shared_ptr<BFS> volume_cache(host::BaseObject& volume, bool create) {
  const std::string directory = cache_directory(volume, create);
  return directory.empty() ? nullptr : getCache(directory);
}

TimeRange time_range(const host::BaseObject& volume) {
  const host::BaseDocument& document = volume.GetDocument();
  const host::BaseContainer& p = volume.GetDataInstance();
  switch (p.GetLong(OVOLUME_TIME_MODE, OVOLUME_TIME_PREVIEW_RANGE)) {
    case OVOLUME_TIME_DOCUMENT_RANGE:
      return {document.GetMinTime(), document.GetMaxTime()};
    case OVOLUME_TIME_OWN_RANGE:
      return {p.GetTime(OVOLUME_TIME_START, {0, 1}), p.GetTime(OVOLUME_TIME_END, {3, 1})};
    default:
      return {document.GetLoopMinTime(), document.GetLoopMaxTime()};
  }
}

int frame_at_time(const host::BaseObject& volume, const host::BaseTime& time) {
  const host::BaseContainer& p = volume.GetDataInstance();
  const host::FrameRate fps = volume.GetDocument().GetFps();
  const host::BaseTime start = time_range(volume).start;
  const std::int64_t frame = p.GetLong(OVOLUME_FRAME_STRIDE, 1) * (time - start).GetFrame(fps) +
                             start.GetFrame(fps) - p.GetLong(OVOLUME_FRAME_OFFSET);
  return static_cast<int>(std::clamp<std::int64_t>(frame, -2147483647, 2147483647));
}

std::string autosave_file(host::BaseObject& volume) {
  const std::string directory = cache_directory(volume, false);
  return directory.empty() ? directory : directory + "/Autosave.c4d";
}

void autosave(host::BaseObject& volume) {
  if (!preference(PREF_AUTOSAVE, true) || !host_services()) return;
  const std::string directory = cache_directory(volume, true);
  if (directory.empty()) {
    LogMessage() << "Failed to get cache dir to autosave project file";
    return;
  }
  const std::string path = directory + "/Autosave.c4d";
  LogMessage() << "saving project to " << path;
  if (!host_services()->SaveDocument(volume.GetDocument(), {path}, host::kSceneFormat))
    LogMessage() << "Failed to save project to " << path;
}

}  // namespace nbx
