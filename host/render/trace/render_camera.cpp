#include "host/render/trace/render_camera.h"

#include <stdexcept>

#include "host/interface/camera.h"
#include "host/render/color.h"
#include "host/render/scene_walk.h"
#include "host/render/surfaces/surface_scene.h"

namespace host {
namespace {

constexpr double kDefaultFieldOfView = 45;

/// Removes scale and shear: a camera's scale has no meaning.
Matrix WithoutScale(const Matrix& m) {
  const Vector z = Normalized(m.v3);
  const Vector x = Normalized(Cross(m.v2, z));
  return {m.off, x, Cross(z, x), z};
}

/// The bounding box of all visible objects that are wanted and have an extent.
template <class Wanted>
SceneBounds BoundsOf(const BaseDocument& document, const Wanted& wanted) {
  SceneBounds bounds;
  for (const BaseObject* object : VisibleObjects(document)) {
    const Vector center = object->GetMp(), half = object->GetRad();
    if (!wanted(*object) || Length(half) <= 0) continue;
    for (int corner = 0; corner < 8; ++corner) {
      const Vector sign{corner & 1 ? 1.0 : -1.0, corner & 2 ? 1.0 : -1.0, corner & 4 ? 1.0 : -1.0};
      bounds.Add(object->GetMg() * (center + Times(half, sign)));
    }
  }
  return bounds;
}

}  // namespace

void SceneBounds::Add(const Vector& p) {
  if (empty) low = high = p;
  low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
  high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  empty = false;
}

SceneBounds PluginBounds(const BaseDocument& document) {
  return BoundsOf(document, [](const BaseObject& o) { return o.GetNodeData() != nullptr; });
}

namespace {

RenderCamera DefaultCamera(const BaseDocument& document, int width, int height) {
  SceneBounds bounds = PluginBounds(document);
  if (bounds.empty) bounds = BoundsOf(document, [](const BaseObject&) { return true; });
  if (bounds.empty) bounds.low = {-100, -100, -100}, bounds.high = {100, 100, 100};
  const Vector center = (bounds.low + bounds.high) * 0.5;
  // So far away that the nearest face of the box fits into the picture.
  const Vector half = (bounds.high - bounds.low) * 0.5;
  const double tangent = std::tan(kDefaultFieldOfView * kPi / 360);
  const double across = half.x / tangent, up = half.y * width / (height * tangent);
  const double distance = 1.1 * std::max({across, up, 1e-3}) + half.z;
  const Vector z = Normalized({0, -0.15, 1});
  const Matrix place{center - z * distance, {1, 0, 0}, Cross(z, {1, 0, 0}), z};
  return {place, kDefaultFieldOfView, 1e-3 * distance, width, height};
}

}  // namespace

RenderCamera::RenderCamera(const Matrix& place, double field_of_view, double near, int width,
                           int height)
    : places_{WithoutScale(place)},
      field_of_view_(field_of_view),
      near_(near),
      half_width_(std::tan(field_of_view * kPi / 360)),
      width_(width),
      height_(height) {}

void RenderCamera::AddStep(const Matrix& place) { places_.push_back(WithoutScale(place)); }

Matrix RenderCamera::PlaceAt(double shutter) const {
  if (places_.size() == 1) return places_.front();
  const double at = shutter * (places_.size() - 1);
  const std::size_t step = std::min(static_cast<std::size_t>(at), places_.size() - 2);
  const double share = at - step;
  const Matrix &a = places_[step], &b = places_[step + 1];
  return WithoutScale({Mix(a.off, b.off, share), Mix(a.v1, b.v1, share), Mix(a.v2, b.v2, share),
                       Mix(a.v3, b.v3, share)});
}

RenderCamera::Ray RenderCamera::At(double x, double y, double shutter) const {
  const Matrix place = PlaceAt(shutter);
  const Vector in_camera{(2 * x / width_ - 1) * HalfWidth(), (1 - 2 * y / height_) * HalfHeight(),
                         1};
  return {place * (in_camera * near_), Normalized(place.Turn(in_camera))};
}

BaseObject* FindCamera(const BaseDocument& document) {
  const BaseContainer& settings = document.GetActiveRenderData().GetDataInstance();
  if (BaseList2D* chosen = settings.GetLink(RENDER_CAMERA); chosen)
    if (chosen->GetType() == kCameraObject) return static_cast<BaseObject*>(chosen);
  for (BaseObject* object : EnabledObjects(document))
    if (object->GetType() == kCameraObject) return object;
  return nullptr;
}

namespace {

/// Throws if positions exceed single precision.
void CheckPlace(const Matrix& place, const std::string& whose, const std::string& cure) {
  constexpr double kFarthest = 1e30;
  const Vector& p = place.off;
  if (!(std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)}) < kFarthest))
    throw std::runtime_error(whose + " is farther away than 1e30 units: " + cure);
}

}  // namespace

RenderCamera ReadCamera(BaseDocument& document, double shutter, int width, int height) {
  BaseObject* object = FindCamera(document);
  if (!object) {
    RenderCamera camera = DefaultCamera(document, width, height);
    CheckPlace(camera.Place(), "the default camera",
               "add a camera to the scene, or make its objects smaller");
    return camera;
  }
  const BaseContainer& data = object->GetDataInstance();
  const double angle = data.GetReal(CAMERA_FIELD_OF_VIEW, kDefaultFieldOfView);
  const Matrix place = object->GetMg();
  if (!(angle > 0 && angle < 180) || Length(Cross(place.v2, place.v3)) <= 0)
    throw std::runtime_error("the camera \"" + object->GetName() +
                             "\" has no field of view between 0 and 180 degrees, or no direction");
  CheckPlace(place, "the camera \"" + object->GetName() + "\"", "move it closer");
  RenderCamera camera(place, angle, std::max(0.0, data.GetReal(CAMERA_NEAR)), width, height);
  bool first = true;
  ForShutterSteps(document, shutter, [&] {
    if (!std::exchange(first, false)) camera.AddStep(object->GetMg());
  });
  return camera;
}

}  // namespace host
