// The polygons of the primitives.
#pragma once

#include <cstdint>
#include <vector>

#include "host/interface/base_container.h"
#include "host/interface/scene.h"

namespace host {

struct PrimitiveMesh {
  std::vector<Vector> points;
  std::vector<CPolygon> polygons;
  std::vector<UvwPolygon> uvws;
};

/// True for the object types that MakePrimitive supports.
bool IsPrimitive(std::int32_t type);

/// The number of polygons that MakePrimitive makes.
double PrimitivePolygons(std::int32_t type, const BaseContainer& data);

/// The mesh of a primitive with these parameters. Outer sides face out. Points are shared: spheres,
/// boxes, tori and cylinders with caps are closed.
PrimitiveMesh MakePrimitive(std::int32_t type, const BaseContainer& data);

}  // namespace host
