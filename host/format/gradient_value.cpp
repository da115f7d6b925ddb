#include "host/format/gradient_value.h"

#include <iterator>

#include "host/base/nearest_name.h"

namespace host {
namespace {

constexpr const char* kModes[] = {"linear", "smooth", "step"};  // in the order of GradientMode

double Share(const JsonPlace& json) {
  const double share = json.Number();
  if (!(share >= 0 && share <= 1)) json.Fail("isn't from 0 to 1");
  return share;
}

Vector ReadColor(const JsonPlace& json) {
  const Vector color = json.VectorValue();
  if (color.x < 0 || color.y < 0 || color.z < 0) json.Fail("a color component is below 0");
  return color;
}

GradientMode ReadMode(const JsonPlace& json) {
  const std::string name = json.Text();
  for (std::size_t i = 0; i < std::size(kModes); ++i)
    if (name == kModes[i]) return static_cast<GradientMode>(i);
  json.Fail("expected linear, smooth or step, found " + Quoted(name));
}

GradientKnot ReadKnot(const JsonPlace& json) {
  if (!json.Value().is_object()) {
    json.ExpectLength(2, 2);
    return {.position = Share(json.At(std::size_t{0})), .color = ReadColor(json.At(1))};
  }
  json.ExpectKeys({"at", "color", "alpha", "mode"});
  if (!json.Has("at") || !json.Has("color")) json.Fail("at or color is missing");
  GradientKnot knot{.position = Share(json.At("at")), .color = ReadColor(json.At("color"))};
  if (json.Has("alpha")) knot.alpha = Share(json.At("alpha"));
  if (json.Has("mode")) knot.mode = ReadMode(json.At("mode"));
  return knot;
}

Json WriteKnot(const GradientKnot& knot) {
  Json color = Json::array({knot.color.x, knot.color.y, knot.color.z});
  const GradientKnot usual{.position = knot.position, .color = knot.color};
  if (knot == usual) return Json::array({knot.position, std::move(color)});
  Json json = {{"at", knot.position}, {"color", std::move(color)}};
  if (knot.alpha != usual.alpha) json["alpha"] = knot.alpha;
  if (knot.mode != usual.mode) json["mode"] = kModes[static_cast<std::size_t>(knot.mode)];
  return json;
}

}  // namespace

Gradient ReadGradient(const JsonPlace& json) {
  json.ExpectArray();
  Gradient gradient;
  for (std::size_t i = 0; i < json.Size(); ++i) {
    const GradientKnot knot = ReadKnot(json.At(i));
    if (i > 0 && knot.position < gradient.knots.back().position)
      json.At(i).Fail("the positions of knots must not descend");
    gradient.knots.push_back(knot);
  }
  return gradient;
}

Json WriteGradient(const Gradient& gradient) {
  Json json = Json::array();
  for (const GradientKnot& knot : gradient.knots) json.push_back(WriteKnot(knot));
  return json;
}

}  // namespace host
