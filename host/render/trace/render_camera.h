// The camera: maps a position in the picture to a ray.
#pragma once

#include <vector>

#include "host/interface/scene.h"

namespace host {

class RenderCamera {
 public:
  /// Looks along z, with y up and x to the right, from the matrix's offset. `field_of_view` is the
  /// angle across the width of the picture, above 0 and below 180 degrees. Nothing closer than
  /// `near` along z is visible.
  RenderCamera(const Matrix& place, double field_of_view, double near, int width, int height);

  struct Ray {
    Vector origin, direction;
  };
  /// (x, y) in pixels from the upper left corner of the picture; `shutter` from 0 to 1.
  Ray At(double x, double y, double shutter) const;

  /// Adds the camera's position at the next step of the shutter.
  void AddStep(const Matrix& place);

  /// The position when the shutter opens. The axes have unit length.
  const Matrix& Place() const { return places_.front(); }
  double FieldOfView() const { return field_of_view_; }
  /// Half the width and height of the picture at distance 1.
  double HalfWidth() const { return half_width_; }
  double HalfHeight() const { return half_width_ * height_ / width_; }
  double Near() const { return near_; }

 private:
  Matrix PlaceAt(double shutter) const;

  std::vector<Matrix> places_;
  double field_of_view_, near_, half_width_;
  int width_, height_;
};

/// The camera of the render settings, otherwise the first camera of the document, over the steps of
/// the shutter. Without a camera, a default one that shows all plug-in objects with an extent, or
/// else all meshes, from slightly above and along z. Throws std::runtime_error for an invalid
/// camera.
RenderCamera ReadCamera(BaseDocument& document, double shutter, int width, int height);

struct SceneBounds {
  Vector low, high;
  bool empty = true;
  void Add(const Vector& point);
};
/// The bounding box of all plug-in objects with an extent.
SceneBounds PluginBounds(const BaseDocument& document);

/// The camera of the document, or null.
BaseObject* FindCamera(const BaseDocument& document);

}  // namespace host
