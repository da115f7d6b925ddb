// The emitter tags of a document, and the meshes behind them.
#pragma once

#include <vector>

#include "host/interface/scene.h"

namespace nbx {

/// All enabled emitter tags: objects depth first in the order of the tree, tags in that of the
/// object.
std::vector<host::BaseTag*> find_source_tags(host::BaseDocument& document);

/// The tag's object, if it counts: null, with a log line, if there is none; null if it or anything
/// above it is switched off.
host::BaseObject* source_object(const host::BaseTag& tag);

bool is_solid(const host::BaseTag& tag);

/// The meshes of `object` and of what lies under it, those of generators included, without what is
/// switched off. Objects with particles have sources of their own kind and add none.
std::vector<host::PolygonObject*> gather_polygon_objects(host::BaseObject& object);

struct SourceMesh {
  host::PolygonObject* mesh = nullptr;
  host::SelectionTag* selection = nullptr;  // null: all polygons
};

/// The meshes that a tag emits from: what its selections select or, without any, all that
/// gather_polygon_objects finds. A selection that can't be used costs a log line.
std::vector<SourceMesh> source_meshes(const host::BaseTag& tag);

/// The meshes of a solid: always whole, since selections say only where a tag emits.
std::vector<SourceMesh> solid_meshes(const host::BaseTag& tag);

}  // namespace nbx
