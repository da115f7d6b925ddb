#include "C4D/run/states/scene_values.h"

#include <QDir>
#include <QFileInfo>
#include <charconv>
#include <cstring>
#include <set>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/parameters/volume_tag_parameters.h"
#include "C4D/sources/source_tags.h"

namespace nbx {

namespace {

std::string number(double x) {
  char text[32];
  const auto [end, error] = std::to_chars(text, text + sizeof text, x);
  return std::string(text, end);
}

std::string row(std::initializer_list<double> numbers) {
  std::string text;
  for (double x : numbers) text += (text.empty() ? "[" : ", ") + number(x);
  return text + "]";
}

std::string row(const host::Vector& v) { return row({v.x, v.y, v.z}); }

std::string absolute(const std::string& path) {
  return QDir::cleanPath(QFileInfo(QString::fromStdString(path)).absoluteFilePath()).toStdString();
}

struct ValueText {
  const host::BaseDocument* document;  // that paths are relative to; null: they stay as they are

  std::string operator()(bool on) const { return on ? "true" : "false"; }
  std::string operator()(std::int32_t n) const { return std::to_string(n); }
  std::string operator()(double x) const { return number(x); }
  std::string operator()(const host::Vector& v) const { return row(v); }
  std::string operator()(const host::BaseTime& t) const { return number(t.Get()); }
  std::string operator()(const std::string& s) const { return s; }
  std::string operator()(const host::Filename& f) const {
    return document && !f.path.empty() ? absolute(document->Resolve(f).path) : f.path;
  }
  std::string operator()(const host::BaseList2D* link) const { return link ? link->GetName() : ""; }
  std::string operator()(const host::CurvePoints& points) const {
    std::string text;
    for (const host::CurvePoint& p : points)
      text +=
          row({p.x, p.y, static_cast<double>(p.in_mode), static_cast<double>(p.out_mode), p.bias});
    return text;
  }
  template <class Other>
  std::string operator()(const Other&) const {
    return {};  // means nothing to a simulation
  }
};

std::string value_text(const host::ParameterInfo& info, const host::ParameterValue& value,
                       const host::BaseDocument* document) {
  for (const host::CycleEntry& entry : info.cycle)
    if (const auto* chosen = std::get_if<std::int32_t>(&value); chosen && *chosen == entry.value)
      return entry.name;
  return std::visit(ValueText{document}, value);
}

template <class Wanted>
void add_parameters(SceneValues& values, const std::string& name, const host::BaseList2D& element,
                    const Wanted& wanted, const host::BaseDocument* document = nullptr) {
  for (const host::ParameterInfo& info : element.GetDescription().parameters)
    if (const auto* value = element.GetDataInstance().Find(info.id); value && wanted(info.id))
      values[name + "." + info.Name()] = value_text(info, *value, document);
}

void add_place(SceneValues& values, const std::string& name, const host::BaseObject& object) {
  const host::Matrix m = object.GetMg();
  values[name + ".matrix"] = row(m.off) + row(m.v1) + row(m.v2) + row(m.v3);
}

/// Fowler, Noll and Vo's hash, FNV-1a, over the points.
std::string points_sum(const host::PolygonObject& mesh) {
  std::uint64_t hash = 0xcbf29ce484222325u;
  for (std::int32_t i = 0; i < mesh.GetPointCount(); ++i) {
    const host::Vector& p = mesh.GetPointR()[i];
    for (const double x : {p.x, p.y, p.z}) {
      std::uint64_t bits;
      std::memcpy(&bits, &x, sizeof bits);
      hash = (hash ^ bits) * 0x100000001b3u;
    }
  }
  return std::to_string(mesh.GetPointCount()) + " points, sum " + std::to_string(hash);
}

void add_object(SceneValues& values, host::BaseObject& object, const host::BaseDocument* document) {
  add_place(values, object.GetName(), object);
  add_parameters(
      values, object.GetName(), object, [](std::int32_t) { return true; }, document);
  if (const host::PolygonObject* mesh = document ? nullptr : host::ToPoly(&object))
    values[object.GetName() + ".shape"] = points_sum(*mesh);
  for (host::BaseObject* child = object.GetDown(); child; child = child->GetNext())
    add_object(values, *child, document);
}

/// True for what decides which channels the frames hold.
bool is_of_frames(std::int32_t id) {
  static const std::set<std::int32_t> ids{
      OVOLUME.CACHE_TEMPERATURE, OVOLUME.CACHE_FUEL,  OVOLUME.CACHE_DENSITY, OVOLUME.CACHE_VELOCITY,
      OVOLUME.CACHE_BURN,        OVOLUME.CACHE_SOLID, OVOLUME.MASK_SOLID};
  return ids.contains(id);
}

/// True for what the gas depends on.
bool is_of_simulation(std::int32_t id) {
  static const std::set<std::int32_t> range{OVOLUME.TIME_MODE, OVOLUME.TIME_START,
                                            OVOLUME.TIME_END};
  return OVOLUME.SimulationParameters::contains(id) && !is_of_frames(id) && !range.contains(id);
}

bool is_of_upres(std::int32_t id) {
  static const std::set<std::int32_t> ids{OVOLUME.UPRES_FACTOR, OVOLUME.UPRES_NOISE,
                                          OVOLUME.UPRES_PERSISTENCE, OVOLUME.UPRES_EXTRA_BANDS};
  return ids.contains(id);
}

}  // namespace

SceneValues scene_values(host::BaseObject& volume, bool upres, ComparedWith other) {
  const host::BaseDocument* const document =
      other == ComparedWith::kSavedScene ? &volume.GetDocument() : nullptr;
  SceneValues values;
  values["fps"] = volume.GetDocument().GetFps().Text();
  add_place(values, volume.GetName(), volume);
  add_parameters(values, volume.GetName(), volume, is_of_simulation, document);
  if (upres) add_parameters(values, volume.GetName(), volume, is_of_upres);
  for (host::BaseTag* tag : find_source_tags(volume.GetDocument())) {
    add_parameters(
        values, tag->GetObject()->GetName(), *tag,
        [](std::int32_t id) { return id != TVOLUME.VERSION; }, document);
    add_object(values, *tag->GetObject(), document);
  }
  return values;
}

SceneValues frame_values(const host::BaseObject& volume) {
  SceneValues values;
  add_parameters(values, volume.GetName(), volume, is_of_frames);
  return values;
}

std::vector<std::string> differences(const SceneValues& then, const SceneValues& now) {
  constexpr std::size_t most = 8;
  const auto shown = [](const std::string& value) {
    return value.size() > 40 ? value.substr(0, 37) + "..." : value;
  };
  std::vector<std::string> lines;
  SceneValues all = then;
  all.insert(now.begin(), now.end());
  for (const auto& [name, ignored] : all) {
    const auto before = then.find(name), after = now.find(name);
    if (before == then.end())
      lines.push_back(name + " is new, it is " + shown(after->second));
    else if (after == now.end())
      lines.push_back(name + " is gone, it was " + shown(before->second));
    else if (before->second != after->second)
      lines.push_back(name + " was " + shown(before->second) + " and is now " +
                      shown(after->second));
  }
  if (lines.size() <= most) return lines;
  const std::string more = std::to_string(lines.size() - most) + " other values differ too";
  lines.resize(most);
  lines.push_back(more);
  return lines;
}

}  // namespace nbx
