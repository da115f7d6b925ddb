#include "C4D/run/states/state_notes.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <filesystem>
#include <locale>
#include <sstream>

namespace nbx {

namespace {

const QString kFormer = "former";

QJsonArray to_json(const Fraction& f) { return {f.num, f.den}; }

QJsonObject to_json(const SceneValues& scene) {
  QJsonObject values;
  for (const auto& [name, value] : scene)
    values[QString::fromStdString(name)] = QString::fromStdString(value);
  return values;
}

// The standard library writes a generator into a stream as some 6000 digits.
QString to_json(const std::mt19937& rng) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << rng;
  return QString::fromStdString(text.str());
}

QJsonObject to_json(const NoiseState& noise) {
  QJsonObject values{{"generator", to_json(noise.rng)}};
  if (!noise.has_tiles) return values;
  values["tile_time"] = noise.tile_time;
  values["before_a"] = to_json(noise.before_a);
  values["before_b"] = to_json(noise.before_b);
  return values;
}

bool take(const QJsonValue& value, Fraction& f) {
  const QJsonArray parts = value.toArray();
  f = {parts.at(0).toDouble(), parts.at(1).toDouble()};
  return parts.size() == 2;
}

void take(const QJsonValue& value, SceneValues& scene) {
  const QJsonObject values = value.toObject();
  for (auto it = values.begin(); it != values.end(); ++it)
    scene[it.key().toStdString()] = it.value().toString().toStdString();
}

bool take(const QJsonValue& value, std::mt19937& rng) {
  std::istringstream text(value.toString().toStdString());
  text.imbue(std::locale::classic());
  return static_cast<bool>(text >> rng);
}

std::optional<NoiseState> noise_of(const QJsonObject& values) {
  NoiseState noise;
  if (!take(values["generator"], noise.rng)) return {};
  noise.has_tiles = values.contains("tile_time");
  noise.tile_time = values["tile_time"].toInt();
  if (noise.has_tiles &&
      !(take(values["before_a"], noise.before_a) && take(values["before_b"], noise.before_b)))
    return {};
  return noise;
}

QJsonObject notes_in(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  return QJsonDocument::fromJson(file.readAll()).object();
}

// Notes of earlier versions don't hold the size of their state.
bool belong_to(const QJsonObject& notes, const StateKey& key) {
  Fraction time;
  return take(notes["time"], time) && time == key.time.time &&
         notes["bytes"].toDouble(static_cast<double>(key.bytes)) == static_cast<double>(key.bytes);
}

}  // namespace

std::string notes_file(const std::string& state) {
  return std::filesystem::path(state).replace_extension(".json").string();
}

std::string notes_text(const std::string& state, const StateKey& key, const StateNotes& notes) {
  const Vec3d& d = notes.wind.direction;
  QJsonObject all{{"time", to_json(key.time.time)},
                  {"bytes", static_cast<double>(key.bytes)},
                  {"wind", QJsonArray{d[0], d[1], d[2], notes.wind.speed}},
                  {"scene", to_json(notes.scene)},
                  {"frames", to_json(notes.frames)}};
  if (notes.range)
    all["range"] = QJsonArray{to_json(notes.range->start), to_json(notes.range->end)};
  if (notes.noise) all["noise"] = to_json(*notes.noise);
  QJsonObject former = notes_in(QString::fromStdString(notes_file(state)));
  former.remove(kFormer);
  if (!former.isEmpty()) all[kFormer] = former;
  return QJsonDocument(all).toJson().toStdString();
}

std::optional<StateNotes> read_notes(const std::string& state, const StateKey& key) {
  QJsonObject notes = notes_in(QString::fromStdString(notes_file(state)));
  if (!belong_to(notes, key)) notes = notes[kFormer].toObject();
  if (!belong_to(notes, key)) return {};
  const QJsonArray wind = notes["wind"].toArray(), range = notes["range"].toArray();
  if (wind.size() != 4) return {};

  StateNotes result;
  result.wind = {{wind[0].toDouble(), wind[1].toDouble(), wind[2].toDouble()}, wind[3].toDouble()};
  take(notes["scene"], result.scene);
  // Earlier versions noted how the run stored its frames too.
  std::erase_if(result.scene,
                [](const auto& value) { return value.first.ends_with(".cache_direct"); });
  take(notes["frames"], result.frames);
  if (RunRange run; take(range.at(0), run.start) && take(range.at(1), run.end)) result.range = run;
  result.noise = noise_of(notes["noise"].toObject());
  return result;
}

}  // namespace nbx
