#include "C4D/run/states/scene_values.h"

#include <QDir>
#include <QFileInfo>
#include <charconv>
#include <cstring>

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

/// The parameters of the volume with this mark.
SceneValues values_that_change(Changes what, const host::BaseObject& volume,
                               const host::BaseDocument* document = nullptr) {
  SceneValues values;
  add_parameters(
      values, volume.GetName(), volume,
      [what](std::int32_t id) { return OVOLUME.changes(id) == what; }, document);
  return values;
}

}  // namespace

SceneValues scene_values(host::BaseObject& volume, bool upres, ComparedWith other) {
  const host::BaseDocument* const document =
      other == ComparedWith::kSavedScene ? &volume.GetDocument() : nullptr;
  SceneValues values = values_that_change(Changes::kGas, volume, document);
  values["fps"] = volume.GetDocument().GetFps().Text();
  add_place(values, volume.GetName(), volume);
  if (upres) values.merge(values_that_change(Changes::kDetail, volume, document));
  for (host::BaseTag* tag : find_source_tags(volume.GetDocument())) {
    add_parameters(
        values, tag->GetObject()->GetName(), *tag,
        [](std::int32_t id) { return TVOLUME.changes(id) == Changes::kGas; }, document);
    add_object(values, *tag->GetObject(), document);
  }
  return values;
}

SceneValues frame_values(const host::BaseObject& volume) {
  return values_that_change(Changes::kFrames, volume);
}

SceneValues picture_values(const host::BaseObject& volume) {
  return values_that_change(Changes::kPicture, volume, &volume.GetDocument());
}

std::vector<ValueChange> changes(const SceneValues& then, const SceneValues& now) {
  const auto find = [](const SceneValues& values, const std::string& name) {
    const auto found = values.find(name);
    return found == values.end() ? std::nullopt : std::optional(found->second);
  };
  std::vector<ValueChange> all;
  SceneValues names = then;
  names.insert(now.begin(), now.end());
  for (const auto& [name, ignored] : names)
    if (ValueChange change{name, find(then, name), find(now, name)}; change.before != change.after)
      all.push_back(std::move(change));
  return all;
}

std::string text_of(const ValueChange& change) {
  const auto shown = [](const std::string& value) {
    return value.size() > 40 ? value.substr(0, 37) + "..." : value;
  };
  if (!change.before) return change.name + " is new, it is " + shown(*change.after);
  if (!change.after) return change.name + " is gone, it was " + shown(*change.before);
  return change.name + " was " + shown(*change.before) + " and is now " + shown(*change.after);
}

std::vector<std::string> differences(const SceneValues& then, const SceneValues& now) {
  constexpr std::size_t most = 8;
  std::vector<std::string> lines;
  for (const ValueChange& change : changes(then, now)) lines.push_back(text_of(change));
  if (lines.size() <= most) return lines;
  const std::string more = std::to_string(lines.size() - most) + " other values differ too";
  lines.resize(most);
  lines.push_back(more);
  return lines;
}

}  // namespace nbx
