#include "host/format/curve_value.h"

#include "host/base/nearest_name.h"

namespace host {
namespace {

constexpr const char* kLinear = "linear";
constexpr const char* kSmooth = "smooth";

CurveMode ReadMode(const JsonPlace& json) {
  const std::string name = json.Text();
  if (name == kLinear) return CurveMode::Linear;
  if (name != kSmooth) json.Fail("expected linear or smooth, found " + Quoted(name));
  return CurveMode::Smooth;
}

const char* ModeName(CurveMode mode) { return mode == CurveMode::Linear ? kLinear : kSmooth; }

double ReadBias(const JsonPlace& json) {
  const double bias = json.Number();
  if (!(bias > 0 && bias < 1)) json.Fail("isn't between 0 and 1");
  return bias;
}

CurvePoint ReadPoint(const JsonPlace& json) {
  if (!json.Value().is_object()) {
    json.ExpectLength(2, 2);
    return {.x = json.At(std::size_t{0}).Number(), .y = json.At(1).Number()};
  }
  json.ExpectKeys({"x", "y", "in", "out", "bias"});
  if (!json.Has("x") || !json.Has("y")) json.Fail("x or y is missing");
  CurvePoint point{.x = json.At("x").Number(), .y = json.At("y").Number()};
  if (json.Has("in")) point.in_mode = ReadMode(json.At("in"));
  if (json.Has("out")) point.out_mode = ReadMode(json.At("out"));
  if (json.Has("bias")) point.bias = ReadBias(json.At("bias"));
  return point;
}

Json WritePoint(const CurvePoint& point) {
  const CurvePoint usual{.x = point.x, .y = point.y};
  if (point == usual) return Json::array({point.x, point.y});
  Json json = {{"x", point.x}, {"y", point.y}};
  if (point.in_mode != usual.in_mode) json["in"] = ModeName(point.in_mode);
  if (point.out_mode != usual.out_mode) json["out"] = ModeName(point.out_mode);
  if (point.bias != usual.bias) json["bias"] = point.bias;
  return json;
}

}  // namespace

CurvePoints ReadCurve(const JsonPlace& json) {
  json.ExpectArray();
  CurvePoints curve;
  for (std::size_t i = 0; i < json.Size(); ++i) curve.push_back(ReadPoint(json.At(i)));
  return curve;
}

Json WriteCurve(const CurvePoints& curve) {
  Json json = Json::array();
  for (const CurvePoint& point : curve) json.push_back(WritePoint(point));
  return json;
}

}  // namespace host
