#include "host/format/scene_hints.h"

#include <algorithm>

namespace host {
namespace {

std::string Text(std::string_view hint) {
  return hint.empty() ? std::string() : "; " + std::string(hint);
}

bool Contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

Hints SceneHints(std::string_view scope) {
  for (const HintScope& one : AllSceneHints())
    if (one.name == scope) return one.hints;
  return {};
}

std::string KeyHint(const std::string& key, std::string_view scope, const ClassDescription& type) {
  if (type.Find(key)) return "; it is a parameter: put it into \"parameters\"";
  const std::string_view hint = FindHint(key, SceneHints(scope));
  return Text(hint.empty() ? FindHint(key, SceneHints(type.name)) : hint);
}

std::string ParameterHint(const std::string& name, const ClassDescription& type,
                          const std::vector<std::string>& keys, const SceneClasses& classes) {
  if (Contains(keys, name)) return "; it isn't a parameter: put it next to \"parameters\"";
  const std::string_view hint = FindHint(name, SceneHints(type.name));
  if (!hint.empty()) return Text(hint);
  const auto owner = [&](const ElementClasses& row, const std::string& kind) {
    for (const ElementClass& other : row.All())
      if (other.description.Find(name))
        return "; it is a parameter of the " + kind + " " + Quoted(other.description.name);
    return std::string();
  };
  const bool is_tag = classes.tags.Find(type.name) != nullptr;
  return is_tag ? owner(classes.objects, "object") : owner(classes.tags, "tag");
}

std::string TrackHint(const std::string& track, const ClassDescription& type, bool is_object) {
  const std::string prefix = "parameters.";
  const bool prefixed = track.rfind(prefix, 0) == 0;
  const ParameterInfo* info = type.Find(prefixed ? track.substr(prefix.size()) : track);
  const bool key_without_track = is_object && (track == "enabled" || track == "visible_in_render");
  if ((info && !info->animatable) || key_without_track) return "; it can't have keyframes";
  if (info && !prefixed) return "; write " + Quoted(prefix + track);
  const std::string name = track.substr(0, track.find_first_of(".["));
  const bool moves = name == "position" || name == "rotation" || name == "scale";
  if (moves && !is_object) return "; only objects move, so give the object keyframes";
  if (moves)
    return "; a track has all three components: " + Quoted(name) + ": [[frame, [x, y, z]], ...]";
  if (!track.empty() && track.find_first_not_of("0123456789.-") == std::string::npos)
    return "; a track has the name of what changes: \"position\": [[frame, value], ...]";
  return Text(FindHint(track, SceneHints("track")));
}

std::string TypeHint(const std::string& name, const std::string& kind,
                     const SceneClasses& classes) {
  const std::string_view hint = FindHint(name, SceneHints(kind + " type"));
  if (!hint.empty()) return Text(hint);
  if (kind != "tag" && classes.tags.Find(name))
    return "; it is the type of a tag: put it into \"tags\" of an object";
  if (kind != "texture" && classes.shaders.Find(name))
    return "; it is the type of a texture: put it into \"textures\"";
  if (kind != "object" && classes.objects.Find(name))
    return "; it is the type of an object: put it into \"objects\"";
  return {};
}

}  // namespace host
