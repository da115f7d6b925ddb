// What to write instead of names that a scene doesn't know: the words of other programs, and names
// in the wrong place.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/base/nearest_name.h"
#include "host/scene/element.h"

namespace host {

/// The hints for unknown names in one place: the keys of a "document", "object", "tag" or "render
/// keys", the types of an "object type", "tag type" or "texture type", a "track", or the parameters
/// of a type by its name, such as "volume".
struct HintScope {
  std::string_view name;
  std::vector<Hint> hints;
};
const std::vector<HintScope>& AllSceneHints();

/// The hints of that scope; none for another name.
Hints SceneHints(std::string_view scope);

// Each of these gives the end of a message about the unknown name, in the form of DidYouMean, or an
// empty text.

/// For a key of an element of that type. `scope` is that of its keys, or empty.
std::string KeyHint(const std::string& key, std::string_view scope, const ClassDescription& type);
/// For a parameter. `keys` are the keys of the element.
std::string ParameterHint(const std::string& name, const ClassDescription& type,
                          const std::vector<std::string>& keys, const SceneClasses& classes);
/// For a track. `is_object` is false for tags, materials and so on.
std::string TrackHint(const std::string& track, const ClassDescription& type, bool is_object);
/// For a type of objects, tags or textures: `kind` is "object", "tag" or "texture".
std::string TypeHint(const std::string& name, const std::string& kind, const SceneClasses& classes);

}  // namespace host
