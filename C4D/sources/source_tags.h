// The emitter tags of a document, and the meshes behind them.
#pragma once

#include <vector>

#include "host/interface/scene.h"

namespace nbx {

/// All enabled emitter tags: objects depth first in the order of the tree, the tags of an object in
/// their order.
std::vector<host::BaseTag*> find_source_tags(host::BaseDocument& document);

/// The object of the tag. Null, with a log line, if there is none; null if it or a parent is
/// switched off.
host::BaseObject* source_object(const host::BaseTag& tag);

bool is_solid(const host::BaseTag& tag);
bool has_solids(const std::vector<host::BaseTag*>& tags);

/// The meshes of `object` and of all objects below it that are switched on, including those of
/// generators. Particle objects are left out: they are sources of their own kind.
std::vector<host::PolygonObject*> gather_polygon_objects(host::BaseObject& object);

struct SourceMesh {
  host::PolygonObject* mesh = nullptr;
  host::SelectionTag* selection = nullptr;  // null: all polygons
};

/// The meshes that a tag emits from: those of its selections or, without any, all that
/// gather_polygon_objects finds. A selection that can't be used is logged and skipped.
std::vector<SourceMesh> source_meshes(const host::BaseTag& tag);

/// The meshes of a solid. Selections don't matter: they only say where a tag emits.
std::vector<SourceMesh> solid_meshes(const host::BaseTag& tag);

}  // namespace nbx
