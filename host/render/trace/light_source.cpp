#include "host/render/trace/light_source.h"

#include <algorithm>

#include "host/render/color.h"
#include "host/render/scene_walk.h"

namespace host {
namespace {

/// The distance of a directional light, in units.
constexpr double kFar = 1e9;

double CosineOfHalf(double degrees) { return std::cos(degrees * (kPi / 360)); }

double SmoothStep(double low, double high, double x) {
  if (high <= low) return x >= high ? 1 : 0;
  const double t = std::clamp((x - low) / (high - low), 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

/// These objects and everything under them, sorted.
std::vector<const BaseObject*> FindExcluded(const BaseDocument& document, const LinkList& links) {
  std::vector<const BaseObject*> excluded;
  if (links.empty()) return excluded;
  for (const BaseObject* object : EnabledObjects(document))
    for (const BaseObject* o = object; o; o = o->GetUp())
      if (std::find(links.begin(), links.end(), o) != links.end()) {
        excluded.push_back(object);
        break;
      }
  std::sort(excluded.begin(), excluded.end());
  return excluded;
}

}  // namespace

LightSource::LightSource(BaseObject& object) {
  const BaseContainer& data = object.GetDataInstance();
  const Matrix to_world = object.GetMg();
  axis_ = Normalized(to_world.v3);
  info_ = {&object, to_world.off,
           data.GetVector(LIGHT_COLOR, {1, 1, 1}) * data.GetReal(LIGHT_INTENSITY, 1),
           data.GetLong(LIGHT_TYPE, LIGHT_TYPE_POINT),
           FindExcluded(object.GetDocument(), data.GetLinks(LIGHT_EXCLUDE))};
  if (info_.type == LIGHT_TYPE_DIRECTIONAL) info_.position = axis_ * -kFar;
  shadow_ = data.GetLong(LIGHT_SHADOW, LIGHT_SHADOW_SOFT);
  if (data.GetLong(LIGHT_FALLOFF) == LIGHT_FALLOFF_INVERSE_SQUARE)
    falloff_distance_ = data.GetReal(LIGHT_FALLOFF_DISTANCE, 100);
  inner_cosine_ = CosineOfHalf(data.GetReal(LIGHT_INNER_ANGLE, 30));
  outer_cosine_ = CosineOfHalf(data.GetReal(LIGHT_OUTER_ANGLE, 40));
  half_x_ = to_world.v1 * (0.5 * data.GetReal(LIGHT_SIZE_X, 100));
  half_y_ = to_world.v2 * (0.5 * data.GetReal(LIGHT_SIZE_Y, 100));
  radius_ = data.GetReal(LIGHT_RADIUS);
  cone_cosine_ = CosineOfHalf(data.GetReal(LIGHT_ANGLE));
}

LightSource LightSource::Default(const Vector& direction) {
  LightSource sun;
  sun.axis_ = Normalized(direction);
  sun.info_ = {nullptr, sun.axis_ * -kFar, {1, 1, 1}, LIGHT_TYPE_DIRECTIONAL, {}};
  sun.cone_cosine_ = CosineOfHalf(2);
  return sun;
}

bool LightSource::HasSize() const {
  if (shadow_ != LIGHT_SHADOW_SOFT) return false;
  if (info_.type == LIGHT_TYPE_AREA) return true;
  return info_.type == LIGHT_TYPE_DIRECTIONAL ? cone_cosine_ < 1 : radius_ > 0;
}

std::optional<LightSample> LightSource::Sample(const Vector& point, double u, double v) const {
  if (!HasSize()) u = v = 0.5;
  if (info_.type == LIGHT_TYPE_DIRECTIONAL) return SampleDirectional(u, v);
  if (info_.type == LIGHT_TYPE_AREA) return SampleArea(point, u, v);
  // A sphere, seen from a distance as a disk that faces the point.
  const Vector to_point = Normalized(point - info_.position);
  const Vector on_disk = HasSize() ? OnDisk(u, v) * radius_ : Vector{};
  return FromPlace(info_.position + Basis(to_point).ToWorld(on_disk), point);
}

std::optional<LightSample> LightSource::FromPlace(const Vector& place, const Vector& point) const {
  const Vector to_light = place - point;
  const double distance = Length(to_light);
  const Vector to_point = Normalized(point - info_.position);
  const double share = info_.type == LIGHT_TYPE_SPOT ? SpotShare(to_point) : 1;
  if (share <= 0 || distance <= 0) return {};
  return LightSample{to_light * (1 / distance), distance,
                     ColorAt(Length(point - info_.position)) * share};
}

std::optional<LightSample> LightSource::SampleArea(const Vector& point, double u, double v) const {
  const Vector place = info_.position + half_x_ * (2 * u - 1) + half_y_ * (2 * v - 1);
  const double distance = Length(place - point);
  const double cosine = distance > 0 ? Dot(point - place, axis_) / distance : 0;
  if (cosine <= 0) return {};
  return LightSample{(place - point) * (1 / distance), distance, ColorAt(distance) * cosine};
}

std::optional<LightSample> LightSource::SampleDirectional(double u, double v) const {
  // Uniform over the solid angle of the cap: 1 - cos is proportional to the squared radius in the
  // disk.
  const Vector d = OnDisk(u, v);
  const double r2 = HasSize() ? d.x * d.x + d.y * d.y : 0;
  const double cosine = 1 - r2 * (1 - cone_cosine_);
  const double scale = r2 > 0 ? std::sqrt((1 - cosine * cosine) / r2) : 0;
  const Vector direction = Basis(axis_ * -1).ToWorld({d.x * scale, d.y * scale, cosine});
  return LightSample{direction, std::numeric_limits<double>::infinity(), info_.color};
}

Vector LightSource::ColorAt(double distance) const {
  if (falloff_distance_ <= 0) return info_.color;
  // Limit the light very close to the source.
  const double r = falloff_distance_ / std::max(distance, 1e-3 * falloff_distance_);
  return info_.color * (r * r);
}

double LightSource::SpotShare(const Vector& to_point) const {
  return SmoothStep(outer_cosine_, inner_cosine_, Dot(to_point, axis_));
}

std::vector<LightSource> ReadLights(const BaseDocument& document) {
  std::vector<LightSource> lights;
  for (BaseObject* object : VisibleObjects(document))
    if (object->GetType() == kLightObject) lights.emplace_back(*object);
  return lights;
}

}  // namespace host
