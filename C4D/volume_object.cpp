#include "C4D/volume_object.h"

#include <QDir>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/guard.h"
#include "C4D/services/host_access.h"
#include "C4D/services/preferences.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/volume/modify_particles.h"
#include "C4D/volume/save_cache.h"
#include "C4D/volume/volume_buttons.h"
#include "C4D/volume/volume_info.h"
#include "cache/cache_registry.h"
#include "util/log.h"

namespace nbx {

namespace {

/// Brings the parameters of an older document to this version, step by step.
void convert_version(host::BaseObject& volume) {
  host::BaseContainer& p = volume.GetDataInstance();
  switch (p.GetLong(OVOLUME.VERSION)) {
    case 0:  // a document without a version: missing parameters get their defaults
      for (const host::ParameterInfo& info : volume.GetDescription().parameters)
        if (info.stored && !p.Find(info.id)) p.Set(info.id, info.default_value);
      [[fallthrough]];
    default:
      p.SetLong(OVOLUME.VERSION, kVolumeParametersVersion);
  }
}

/// "caches//a/../b" becomes "caches/b"; a relative path stays relative. A / at the end has a
/// meaning and stays.
void normalize_cache_location(host::BaseContainer& volume) {
  const QString before = QString::fromStdString(volume.GetFilename(OVOLUME.CACHE_NAME).path);
  QString path = QDir::cleanPath(before);
  if (before.endsWith('/') && !path.endsWith('/')) path += '/';
  volume.SetFilename(OVOLUME.CACHE_NAME, {path.toStdString()});
}

void lock_cache(host::BaseObject& volume) {
  const bool on = ParameterReader(volume)(OVOLUME.CACHE_LOCK);
  const std::string directory = find_cache(volume);
  if (directory.empty())
    LogMessage() << "volume \"" << volume.GetName() << "\" has no cache to "
                 << (on ? "lock" : "unlock");
  else
    set_cache_lock(directory, on);
}

void parameter_changed(host::BaseObject& volume, std::int32_t id) {
  if (id == OVOLUME.DISPLAY_ON && ParameterReader(volume)(OVOLUME.DISPLAY_ON))
    set_preference(PREF.VIEWPORT_GL, true);
  if (id == OVOLUME.CACHE_LOCK) lock_cache(volume);
}

}  // namespace

std::shared_ptr<BFS> VolumeObject::get_cache(const host::BaseObject& object) {
  const std::string directory = shown_cache(object);
  if (directory.empty() || (cache_ && cache_->directory() == directory)) return cache_;
  return cache_ = getCache(directory);
}

void VolumeObject::handleButton(host::BaseObject& object, std::int32_t id) {
  if (id == OVOLUME.BAKE_FIRE)
    bake_fire(object);
  else if (id == OVOLUME.MEASURE_RANGE)
    measure_range(object, get_cache(object));
  else
    LogMessage() << "handleButton: unknown button id " << id;
}

bool VolumeObject::handle(host::BaseObject& object, std::int32_t type, void* data) {
  switch (type) {
    case host::kMessageButton:
      handleButton(object, static_cast<host::DescriptionMessage*>(data)->id);
      return true;
    case host::kMessageParameterChanged:
      parameter_changed(object, static_cast<host::DescriptionMessage*>(data)->id);
      return true;
    case host::kMessageDocumentLoaded:
      convert_version(object);
      normalize_cache_location(object.GetDataInstance());
      return true;
    case host::kMessageSaveAssets:
      save_cache(object, *static_cast<host::SaveAssets*>(data));
      return true;
    default:
      return false;
  }
}

bool VolumeObject::Message(host::BaseList2D& node, std::int32_t type, void* data) {
  const auto fail = [&](const std::string& why) {
    if (type == host::kMessageSaveAssets)
      static_cast<host::SaveAssets*>(data)->failures.push_back("volume \"" + node.GetName() +
                                                               "\": " + why);
    return false;
  };
  return guarded("VolumeObject::Message", fail,
                 [&] { return handle(static_cast<host::BaseObject&>(node), type, data); });
}

bool VolumeObject::GetDParameter(host::BaseList2D& node, std::int32_t id,
                                 host::ParameterValue& value) {
  return guarded("VolumeObject::GetDParameter", false, [&] {
    auto& object = static_cast<host::BaseObject&>(node);
    const bool of_frame = OVOLUME.InfoParameters::contains(id);
    return info_field(value, id, object, of_frame ? get_cache(object) : nullptr);
  });
}

bool VolumeObject::GetDEnabling(const host::BaseList2D& node, std::int32_t id) const {
  return guarded("VolumeObject::GetDEnabling", true, [&] { return OVOLUME.enabled(id, node); });
}

void VolumeObject::GetDimension(const host::BaseObject& object, host::Vector& center,
                                host::Vector& radius) const {
  center = radius = {};
  guarded("VolumeObject::GetDimension",
          [&] { radius = ParameterReader(object)(OVOLUME.SIZE) * 0.5; });
}

void VolumeObject::ModifyParticles(const host::BaseObject& object, const host::Particles& particles,
                                   std::vector<host::ParticleModification>& changes, double step) {
  guarded("VolumeObject::ModifyParticles", [&] {
    if (ParameterReader(object)(OVOLUME.PARTICLE_ADVECTION) > 0)
      modify_particles(object, get_cache(object), particles, changes, step);
  });
}

bool register_volume_object(host::HostServices& services, const std::string& name) {
  return services.RegisterObjectPlugin(
      kVolumeObject, name,
      []() -> std::unique_ptr<host::ObjectData> { return std::make_unique<VolumeObject>(); },
      volume_description());
}

}  // namespace nbx
