#include "C4D/simulation_state.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <filesystem>

#include "util/log.h"
#include "util/whole_file.h"

namespace nbx {

namespace {

/// "x/LastSimState.bcf" has its notes in "x/LastSimState.json".
std::string notes_file(const std::string& path) {
  return std::filesystem::path(path).replace_extension(".json").string();
}

std::string notes_text(const FrameTime& time, const Wind& wind, const SceneValues& scene) {
  QJsonObject values;
  for (const auto& [name, value] : scene)
    values[QString::fromStdString(name)] = QString::fromStdString(value);
  const Vec3d& d = wind.direction;
  const QJsonObject notes{{"time", QJsonArray{time.time.num, time.time.den}},
                          {"wind", QJsonArray{d[0], d[1], d[2], wind.speed}},
                          {"scene", values}};
  return QJsonDocument(notes).toJson().toStdString();
}

SimSettings with_all_channels(const SimSettings& settings) {
  SimSettings all = settings;
  for (int key = kVelocity; key <= kSecondVelocity; ++key) all.cached_channels.insert(key);
  return all;
}

}  // namespace

std::string last_state_file(const std::string& directory) {
  return directory + "/LastSimState.bcf";
}

bool write_state(const std::string& path, Simulation3D& sim, const FrameTime& time,
                 const SceneValues& scene, std::string& reason) {
  const BFS& cache = *sim.settings.target_cache;
  SimFrame frame;
  frame.ownsData = false;
  sim.fill_frame(frame, with_all_channels(sim.settings), time);
  const std::string notes = notes_text(time, sim.fluid().wind_seen(), scene);
  WholeFile file(path, cache.sync);
  if (frame.write(file.part(), cache.codec) == 0)
    reason = frame.error;
  else if (!write_whole(notes_file(path), notes, cache.sync, reason))
    reason = notes_file(path) + " can't be written: " + reason;
  else if (file.commit(reason))
    return true;
  LogMessage() << "Failed to store simulation state: " << reason;
  return false;
}

bool read_state(const std::string& path, SimFrame& frame, std::string& reason) try {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) {
    reason = "there is no such file";
    return false;
  }
  if (!frame.load(path)) {
    reason = "it holds no grids";
    return false;
  }
  for (const auto& [type, grid] : frame.grids)
    if (!frame.grid(type)) {
      reason = "it can't be opened";
      return false;
    }
  return true;
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception& e) {
  reason = e.what();
  return false;
}

std::optional<StateNotes> read_notes(const std::string& path, const FrameTime& time) {
  QFile file(QString::fromStdString(notes_file(path)));
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QJsonObject notes = QJsonDocument::fromJson(file.readAll()).object();
  const QJsonArray when = notes["time"].toArray(), wind = notes["wind"].toArray();
  if (when.size() != 2 || wind.size() != 4) return {};
  if (when[0].toDouble() != time.time.num || when[1].toDouble() != time.time.den) return {};
  StateNotes result{
      {{wind[0].toDouble(), wind[1].toDouble(), wind[2].toDouble()}, wind[3].toDouble()}, {}};
  const QJsonObject scene = notes["scene"].toObject();
  for (auto it = scene.begin(); it != scene.end(); ++it)
    result.scene[it.key().toStdString()] = it.value().toString().toStdString();
  return result;
}

}  // namespace nbx
