#include "host/format/mesh_text.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "host/format/parameter_value.h"

namespace host {
namespace {

void ReadPolygons(const JsonPlace& json, SceneObject& object) {
  if (!json.Has("points") || !json.Has("polygons"))
    json.Fail("\"points\" and \"polygons\" go together; one of them is missing");
  const JsonPlace points = json.At("points"), polygons = json.At("polygons");
  points.ExpectArray();
  for (std::size_t i = 0; i < points.Size(); ++i)
    object.points.push_back(points.At(i).VectorValue());
  const std::int32_t last = object.GetPointCount() - 1;
  polygons.ExpectArray();
  if (polygons.Size() == 0) polygons.Fail("the mesh has no polygons");
  for (std::size_t i = 0; i < polygons.Size(); ++i) {
    const JsonPlace corners = polygons.At(i);
    corners.ExpectLength(3, 4);
    const auto corner = [&](std::size_t k) { return corners.At(k).Whole(0, last); };
    object.polygons.push_back(
        {corner(0), corner(1), corner(2), corner(corners.Size() == 4 ? 3 : 2)});
  }
  object.inline_mesh = true;
}

/// One array of corners [u, v] for each polygon.
void ReadUvs(const JsonPlace& json, SceneObject& object) {
  const std::size_t count = object.polygons.size();
  json.ExpectLength(count, count);
  if (!object.inline_mesh) json.Fail("belong to \"points\" and \"polygons\"");
  for (std::size_t i = 0; i < count; ++i) {
    const JsonPlace corners = json.At(i);
    const std::size_t sides = object.polygons[i].c == object.polygons[i].d ? 3 : 4;
    corners.ExpectLength(sides, sides);
    const auto corner = [&](std::size_t k) {
      corners.At(k).ExpectLength(2, 2);
      return Vector{corners.At(k).At(std::size_t{0}).Number(), corners.At(k).At(1).Number(), 0};
    };
    object.uvws.push_back({corner(0), corner(1), corner(2), corner(sides - 1)});
  }
}

void ReadWeights(const JsonPlace& json, SceneObject& object) {
  if (!object.inline_mesh) json.Fail("belong to \"points\" and \"polygons\"");
  json.ExpectLength(object.points.size(), object.points.size());
  for (std::size_t i = 0; i < json.Size(); ++i) {
    const double weight = json.At(i).Number();
    if (weight < 0 || weight > 1) json.At(i).Fail("expected a weight from 0 to 1");
    object.weights.push_back(weight);
  }
}

/// Two or more of {"frame": number, "points": [...]}, with ascending frames.
void ReadShapes(const JsonPlace& json, SceneObject& object) {
  json.ExpectArray();
  if (!object.inline_mesh) json.Fail("belong to \"points\" and \"polygons\"");
  if (json.Size() < 2) json.Fail("expected at least two shapes");
  for (std::size_t i = 0; i < json.Size(); ++i) {
    const JsonPlace place = json.At(i);
    place.ExpectKeys({"frame", "points"});
    if (!place.Has("frame") || !place.Has("points")) place.Fail("frame or points is missing");
    MeshShape shape{place.At("frame").Number(), {}};
    if (i > 0 && shape.frame <= object.shapes.back().frame)
      place.At("frame").Fail("the frames of shapes must ascend");
    const JsonPlace points = place.At("points");
    points.ExpectLength(object.points.size(), object.points.size());
    for (std::size_t k = 0; k < points.Size(); ++k)
      shape.points.push_back(points.At(k).VectorValue());
    object.shapes.push_back(std::move(shape));
  }
  object.points = object.shapes.front().points;
}

Json WritePoints(const std::vector<Vector>& points) {
  Json json = Json::array();
  for (const Vector& p : points) json.push_back(WriteVector(p));
  return json;
}

}  // namespace

void ReadMesh(const JsonPlace& json, SceneObject& object) {
  if (json.Has("points") || json.Has("polygons")) ReadPolygons(json, object);
  if (json.Has("uvs")) ReadUvs(json.At("uvs"), object);
  if (json.Has("weights")) ReadWeights(json.At("weights"), object);
  if (json.Has("shapes")) ReadShapes(json.At("shapes"), object);
}

void WriteMesh(const SceneObject& object, Json& json) {
  if (!object.inline_mesh) return;
  Json polygons = Json::array();
  const std::vector<Vector>& first =
      object.shapes.empty() ? object.points : object.shapes.front().points;
  for (const CPolygon& p : object.polygons)
    polygons.push_back(p.c == p.d ? Json::array({p.a, p.b, p.c})
                                  : Json::array({p.a, p.b, p.c, p.d}));
  json["points"] = WritePoints(first);
  json["polygons"] = std::move(polygons);
  Json uvs = Json::array();
  for (std::size_t i = 0; i < object.uvws.size(); ++i) {
    const UvwPolygon& uvw = object.uvws[i];
    const CPolygon& p = object.polygons[i];
    Json corners = Json::array();
    for (const Vector* corner : {&uvw.a, &uvw.b, &uvw.c, &uvw.d})
      if (corner != &uvw.d || p.c != p.d) corners.push_back(Json::array({corner->x, corner->y}));
    uvs.push_back(std::move(corners));
  }
  if (!uvs.empty()) json["uvs"] = std::move(uvs);
  if (!object.weights.empty()) json["weights"] = object.weights;
  Json shapes = Json::array();
  for (const MeshShape& shape : object.shapes)
    shapes.push_back({{"frame", shape.frame}, {"points", WritePoints(shape.points)}});
  if (!shapes.empty()) json["shapes"] = std::move(shapes);
}

IndexRanges ReadRanges(const JsonPlace& json) {
  constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max() - 1;
  IndexRanges all, joined;
  json.ExpectArray();
  for (std::size_t i = 0; i < json.Size(); ++i) {
    const JsonPlace one = json.At(i);
    if (one.Value().is_array()) one.ExpectLength(2, 2);
    const std::int32_t first =
        one.Value().is_array() ? one.At(std::size_t{0}).Whole(0, most) : one.Whole(0, most);
    all.emplace_back(first, one.Value().is_array() ? one.At(1).Whole(first, most) : first);
  }
  std::sort(all.begin(), all.end());
  for (const auto& range : all) {
    if (joined.empty() || range.first > joined.back().second + 1) joined.push_back(range);
    joined.back().second = std::max(joined.back().second, range.second);
  }
  return joined;
}

Json WriteRanges(const IndexRanges& ranges) {
  Json json = Json::array();
  for (const auto& [first, last] : ranges)
    json.push_back(first == last ? Json(first) : Json::array({first, last}));
  return json;
}

}  // namespace host
