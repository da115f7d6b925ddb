#include "host/format/keyframe_text.h"

#include <algorithm>

#include "host/base/nearest_name.h"
#include "host/format/parameter_value.h"
#include "host/format/scene_hints.h"

namespace host {
namespace {

const std::string kParameterPrefix = "parameters.";

/// [[frame, value], ...], or {"interpolation": "smooth", "keys": [[frame, value], ...]}.
template <class ReadKeyValue>
Track ReadTrack(const JsonPlace& json, ReadKeyValue read) {
  Track track;
  JsonPlace keys = json;
  if (json.Value().is_object()) {
    json.ExpectKeys({"interpolation", "keys"});
    if (!json.Has("keys")) json.Fail("the key \"keys\" is missing");
    keys = json.At("keys");
    const std::string how = json.Has("interpolation") ? json.At("interpolation").Text() : "linear";
    if (how != "linear" && how != "smooth")
      json.At("interpolation").Fail("unknown choice " + Quoted(how) + ", choose linear or smooth");
    if (how == "smooth") track.interpolation = Interpolation::Smooth;
  }
  keys.ExpectArray();
  if (keys.Size() == 0) keys.Fail("expected at least one key [frame, value]");
  for (std::size_t i = 0; i < keys.Size(); ++i) {
    const JsonPlace key = keys.At(i);
    if (!key.Value().is_array() || key.Size() != 2) key.Fail("expected a key [frame, value]");
    const double frame = key.At(std::size_t{0}).Number();
    if (i > 0 && frame <= track.keys.back().frame) key.Fail("the frames of keys must ascend");
    track.keys.push_back({frame, read(key.At(1))});
  }
  return track;
}

template <class WriteKeyValue>
Json WriteTrack(const Track& track, WriteKeyValue write) {
  Json keys = Json::array();
  for (const Key& key : track.keys) {
    // Whole frames are written without a fraction.
    const auto whole = static_cast<std::int64_t>(key.frame);
    const Json frame = whole == key.frame ? Json(whole) : Json(key.frame);
    keys.push_back(Json::array({frame, write(key.value)}));
  }
  if (track.interpolation == Interpolation::Linear) return keys;
  return {{"interpolation", "smooth"}, {"keys", keys}};
}

void ExpectTracks(const JsonPlace& json, const std::vector<std::string>& names,
                  const ElementState& element, bool is_object) {
  json.ExpectKeys(names, "track", [&](const std::string& key) {
    return TrackHint(key, element.type->description, is_object);
  });
}

std::vector<std::string> TrackNames(const ElementState& element) {
  std::vector<std::string> names;
  for (const ParameterInfo& info : element.type->description.parameters)
    if (info.animatable && info.stored) names.push_back(kParameterPrefix + info.Name());
  return names;
}

void ReadParameterTracks(ElementState& element, const JsonPlace& json, Document& document) {
  for (const auto& [key, value] : json.Value().items()) {
    if (key.rfind(kParameterPrefix, 0) != 0) continue;
    const JsonPlace place = json.At(key);
    const ParameterInfo& info =
        *element.type->description.Find(key.substr(kParameterPrefix.size()));
    if (element.written.count(info.id) != 0)
      place.Fail("the parameter has a value and keyframes; remove one of them");
    element.tracks[info.id] =
        ReadTrack(place, [&](const JsonPlace& at) { return ReadValue(info, at, document); });
  }
}

Json WriteParameterTracks(const ElementState& element, const Document& document) {
  Json json = Json::object();
  for (const ParameterInfo& info : element.type->description.parameters) {
    const auto found = element.tracks.find(info.id);
    if (found == element.tracks.end()) continue;
    json[kParameterPrefix + info.Name()] =
        WriteTrack(found->second, [&](const ParameterValue& value) {
          BaseContainer one;
          one.Set(info.id, value);
          return WriteValue(info, one, document);
        });
  }
  return json;
}

}  // namespace

void ReadKeyframes(SceneObject& object, const JsonPlace& json, Document& document) {
  std::vector<std::string> names = TrackNames(object.State());
  names.insert(names.end(), {"position", "rotation", "scale"});
  ExpectTracks(json, names, object.State(), true);
  const auto vector = [](const JsonPlace& at) { return at.VectorValue(); };
  if (json.Has("position")) object.position_track = ReadTrack(json.At("position"), vector);
  if (json.Has("rotation")) object.rotation_track = ReadTrack(json.At("rotation"), vector);
  if (json.Has("scale")) object.scale_track = ReadTrack(json.At("scale"), ReadScale);
  ReadParameterTracks(object.State(), json, document);
}

void ReadKeyframes(ElementState& element, const JsonPlace& json, Document& document) {
  ExpectTracks(json, TrackNames(element), element, false);
  ReadParameterTracks(element, json, document);
}

Json WriteKeyframes(const SceneObject& object, const Document& document) {
  Json json = Json::object();
  const auto vector = [](const ParameterValue& v) { return WriteVector(std::get<Vector>(v)); };
  if (object.position_track) json["position"] = WriteTrack(*object.position_track, vector);
  if (object.rotation_track) json["rotation"] = WriteTrack(*object.rotation_track, vector);
  if (object.scale_track) json["scale"] = WriteTrack(*object.scale_track, vector);
  json.update(WriteParameterTracks(object.State(), document));
  return json;
}

Json WriteKeyframes(const ElementState& element, const Document& document) {
  return WriteParameterTracks(element, document);
}

Vector ReadScale(const JsonPlace& json) {
  const Vector scale = json.VectorValue();
  if (scale.x == 0 || scale.y == 0 || scale.z == 0) json.Fail("no component may be 0");
  return scale;
}

}  // namespace host
