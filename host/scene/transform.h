// The position of an object in its parent's space.
#pragma once

#include "host/interface/vector.h"

namespace host {

/// Scale is applied first, then rotation, then position. The rotation is heading, pitch, bank in
/// degrees: bank turns x toward y, then pitch turns y toward z, then heading turns z toward x, each
/// about an axis of the parent.
struct Transform {
  Vector position;
  Vector rotation;
  Vector scale{1, 1, 1};

  friend bool operator==(const Transform&, const Transform&) = default;
};

/// heading * pitch * bank * scale, with the position as offset. Multiples of 90 degrees are exact.
Matrix ToMatrix(const Transform& transform);

/// The inverse of ToMatrix. A mirroring matrix gives a negative scale along x. Shear is lost;
/// `shear` returns its amount, the largest cosine between two axes. A zero column counts as a
/// column of length 1e-6. Among equivalent angles, those nearest to `former` are returned.
Transform ToTransform(const Matrix& matrix, const Vector& former, double& shear);

}  // namespace host
