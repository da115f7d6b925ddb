// The camera of a picture: from a place on the picture to a ray.
#pragma once

#include <vector>

#include "host/interface/scene.h"

namespace host {

class RenderCamera {
 public:
  /// Looks along z, y up, x to the right, from the matrix's offset. `field_of_view`, degrees above
  /// 0 and below 180, spans the picture's width; nothing closer than `near` along z is seen.
  RenderCamera(const Matrix& place, double field_of_view, double near, int width, int height);

  struct Ray {
    Vector origin, direction;
  };
  /// (x, y) in pixels from the upper left corner of the picture; `shutter` from 0 to 1.
  Ray At(double x, double y, double shutter) const;

  /// Where the camera stands at a further, later step of the shutter.
  void AddStep(const Matrix& place);

  /// At the opening of the shutter. The axes have unit length.
  const Matrix& Place() const { return places_.front(); }
  double FieldOfView() const { return field_of_view_; }
  /// Half of the picture's width and height at distance 1.
  double HalfWidth() const { return half_width_; }
  double HalfHeight() const { return half_width_ * height_ / width_; }
  double Near() const { return near_; }

 private:
  Matrix PlaceAt(double shutter) const;

  std::vector<Matrix> places_;
  double field_of_view_, near_, half_width_;
  int width_, height_;
};

/// The render settings' camera, else the document's first one, over the shutter's steps. Without
/// any camera one that looks, slightly from above and along z, at all objects that plug-ins give an
/// extent, else at all meshes, so that they fill the picture. Throws std::runtime_error for a
/// camera that can't work.
RenderCamera ReadCamera(BaseDocument& document, double shutter, int width, int height);

struct SceneBounds {
  Vector low, high;
  bool empty = true;
  void Add(const Vector& point);
};
/// The box round all objects that plug-ins give an extent.
SceneBounds PluginBounds(const BaseDocument& document);

/// Where the document has a camera, that one; null if there is none.
BaseObject* FindCamera(const BaseDocument& document);

}  // namespace host
