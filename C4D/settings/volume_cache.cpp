#include "C4D/settings/volume_cache.h"

#include <QDir>
#include <QFileInfo>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_access.h"
#include "C4D/services/preferences.h"
#include "cache/cache_registry.h"
#include "util/log.h"

namespace nbx {

namespace {

const std::string kUpres = " upres";

/// "fire.log" for the volume "log" in the scene "fire.json".
QString name_of(const host::BaseObject& volume) {
  const QFileInfo scene(QString::fromStdString(volume.GetDocument().GetDocumentName()));
  QString object = QString::fromStdString(volume.GetName());
  object.replace('/', '_');
  return scene.completeBaseName() + "." + object;
}

CacheDirData place_beside_scene(const host::BaseObject& volume) {
  const std::string folder = volume.GetDocument().GetDocumentPath().path;
  if (folder.empty()) return {};
  return {folder, (name_of(volume) + ".cache").toStdString()};
}

std::string join(const CacheDirData& data) {
  if (data.base.empty() || data.name.empty()) return {};
  return QDir(QString::fromStdString(data.base))
      .filePath(QString::fromStdString(data.name))
      .toStdString();
}

}  // namespace

CacheDirData cache_dir_data(const host::BaseObject& volume) {
  const host::Filename named = ParameterReader(volume)(OVOLUME.CACHE_NAME);
  const std::string path = volume.GetDocument().Resolve(named).path;
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return place_beside_scene(volume);
  return {path.substr(0, std::max<std::size_t>(slash, 1)), path.substr(slash + 1)};
}

void set_cache_dir_data(host::BaseObject& volume, const CacheDirData& data) {
  volume.GetDataInstance().SetFilename(
      OVOLUME.CACHE_NAME, {data.base.empty() ? std::string() : data.base + "/" + data.name});
}

std::string cache_stem(const host::BaseObject& volume) { return name_of(volume).toStdString(); }

std::string named_cache(const host::BaseObject& volume) { return join(cache_dir_data(volume)); }

std::string find_cache(const host::BaseObject& volume) {
  CacheDirData data = cache_dir_data(volume);
  std::string directory;
  return resolve_cache_dir(data, directory, false, "") ? directory : std::string();
}

std::string make_cache(host::BaseObject& volume) {
  CacheDirData data = cache_dir_data(volume);
  if (const std::string named = join(data); !named.empty()) {
    if (!QDir().mkpath(QString::fromStdString(named))) {
      LogMessage() << "Failed to create cache dir " << named;
      return {};
    }
  }
  std::string directory;
  const std::string preferred = data.base.empty() ? preferred_cache_folder() : std::string();
  if (!resolve_cache_dir(data, directory, true, preferred)) return {};
  const bool unnamed = volume.GetDataInstance().GetFilename(OVOLUME.CACHE_NAME).path.empty();
  if (unnamed || !(data == cache_dir_data(volume))) set_cache_dir_data(volume, data);
  return directory;
}

std::string make_new_cache(host::BaseObject& volume) {
  const std::string base = cache_dir_data(volume).base;
  if (volume.GetDocument().GetDocumentPath().path.empty()) {
    set_cache_dir_data(volume, {base, ""});
    return make_cache(volume);
  }
  const QDir folder(QString::fromStdString(base));
  const bool upres = is_upres_cache(named_cache(volume));
  QString name;
  for (int i = 1; name.isEmpty() || folder.exists(name); ++i)
    name = name_of(volume) + QString(".%1").arg(i, 3, 10, QChar('0')) +
           QString::fromStdString(upres ? kUpres : "");
  if (!folder.mkpath(".") || !folder.mkdir(name)) {
    LogMessage() << "Failed to create cache dir " << folder.absoluteFilePath(name);
    return {};
  }
  set_cache_dir_data(volume, {base, name.toStdString()});
  return find_cache(volume);
}

bool is_upres_cache(const std::string& directory) { return directory.ends_with(kUpres); }

std::string upres_cache(const std::string& directory) {
  return is_upres_cache(directory) ? directory : directory + kUpres;
}

std::string upres_source(const std::string& directory) {
  return is_upres_cache(directory) ? directory.substr(0, directory.size() - kUpres.size())
                                   : directory;
}

std::string shown_cache(const host::BaseObject& volume) {
  if (!ParameterReader(volume)(OVOLUME.SHOW_UPRES)) return find_cache(volume);
  const std::string named = named_cache(volume), upres = upres_cache(named);
  return !named.empty() && QDir(QString::fromStdString(upres)).exists() ? upres : std::string();
}

std::shared_ptr<BFS> volume_cache(host::BaseObject& volume, bool create) {
  const std::string directory = create ? make_cache(volume) : find_cache(volume);
  return directory.empty() ? nullptr : getCache(directory);
}

TimeRange time_range(const host::BaseObject& volume) {
  const host::BaseDocument& document = volume.GetDocument();
  const ParameterReader p(volume);
  switch (p(OVOLUME.TIME_MODE)) {
    case OVOLUME_TIME_DOCUMENT_RANGE:
      return {document.GetMinTime(), document.GetMaxTime()};
    case OVOLUME_TIME_OWN_RANGE:
      return {p(OVOLUME.TIME_START), p(OVOLUME.TIME_END)};
    default:
      return {document.GetLoopMinTime(), document.GetLoopMaxTime()};
  }
}

int frame_at_time(const host::BaseObject& volume, const host::BaseTime& time) {
  const ParameterReader p(volume);
  const host::FrameRate fps = volume.GetDocument().GetFps();
  const host::BaseTime start = time_range(volume).start;
  const std::int64_t frame = p(OVOLUME.FRAME_STRIDE) * (time - start).GetFrame(fps) +
                             start.GetFrame(fps) - p(OVOLUME.FRAME_OFFSET);
  return static_cast<int>(std::clamp<std::int64_t>(frame, -2147483647, 2147483647));
}

std::string autosave_file(const std::string& directory) { return directory + "/Autosave.c4d"; }

bool has_autosave(const host::BaseObject& volume) {
  const std::string directory = find_cache(volume);
  return !directory.empty() && QFileInfo::exists(QString::fromStdString(autosave_file(directory)));
}

void autosave(host::BaseObject& volume) {
  if (!preference(PREF.AUTOSAVE) || !host_services()) return;
  const std::string directory = make_cache(volume);
  if (directory.empty()) {
    LogMessage() << "Failed to get cache dir to autosave project file";
    return;
  }
  const std::string path = autosave_file(directory);
  LogMessage() << "saving project to " << path;
  if (!host_services()->SaveDocument(volume.GetDocument(), {path}, host::kSceneFormat))
    LogMessage() << "Failed to save project to " << path;
}

}  // namespace nbx
