#include "C4D/commands/run_options.h"

#include <QDir>
#include <QFileInfo>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/domain_checks.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"

namespace nbx {

namespace {

void add_volumes(std::vector<host::BaseObject*>& volumes, host::BaseObject* object, bool enabled) {
  for (; object; object = object->GetNext()) {
    if (enabled && !object->GetDeformMode()) continue;
    if (object->GetType() == kVolumeObject) volumes.push_back(object);
    add_volumes(volumes, object->GetDown(), enabled);
  }
}

}  // namespace

std::vector<host::BaseObject*> find_volumes(host::BaseDocument& document, bool enabled) {
  std::vector<host::BaseObject*> volumes;
  add_volumes(volumes, document.GetFirstObject(), enabled);
  return volumes;
}

std::string volume_subject(const host::BaseObject& volume) {
  return volume.GetDocument().GetDocumentName() + ": volume \"" + volume.GetName() + "\": ";
}

std::string absolute_path(const std::string& path) {
  return QDir::cleanPath(QFileInfo(QString::fromStdString(path)).absoluteFilePath()).toStdString();
}

Outcome take_frames(const host::CommandArguments& arguments, host::BaseObject& volume) {
  const auto& frames = arguments.GetFrames("frames");
  if (frames.empty()) return Outcome::success();
  const std::int32_t first = frames.front(), last = frames.back();
  if (std::int64_t{last} - first + 1 != std::ssize(frames))
    return Outcome::failure("--frames: a simulation includes every frame: give FIRST-LAST");
  const host::FrameRate fps = volume.GetDocument().GetFps();
  host::BaseContainer& parameters = volume.GetDataInstance();
  parameters.SetLong(OVOLUME.TIME_MODE, OVOLUME_TIME_OWN_RANGE);
  parameters.SetTime(OVOLUME.TIME_START, host::BaseTime::FromFrame(first, fps));
  parameters.SetTime(OVOLUME.TIME_END, host::BaseTime::FromFrame(last, fps));
  return Outcome::success();
}

std::string set_cache(const host::CommandArguments& arguments, host::BaseObject& volume) {
  const std::string directory =
      arguments.Has("cache") ? absolute_path(arguments.GetString("cache")) : named_cache(volume);
  if (!directory.empty()) volume.GetDataInstance().SetFilename(OVOLUME.CACHE_NAME, {directory});
  return directory;
}

Outcome check_domain_and_range(host::BaseObject& volume) {
  const double voxel_size = ParameterReader(volume)(OVOLUME.VOXEL_SIZE);
  if (!(voxel_size > 0)) return Outcome::failure("voxel_size must be above 0");
  const TimeRange range = time_range(volume);
  if (range.end < range.start) return Outcome::failure("the last frame is before the first");
  evaluate(volume.GetDocument(), range.start);
  return check_domain(volume, voxel_size);
}

}  // namespace nbx
