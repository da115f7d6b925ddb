// Where an object sits in its parent's space, as the user gives it.
#pragma once

#include "host/interface/vector.h"

namespace host {

/// Scale first, then rotation, then position. The rotation is heading, pitch, bank in degrees:
/// bank turns x towards y, then pitch turns y towards z, then heading turns z towards x, each
/// about an axis of the parent.
struct Transform {
  Vector position;
  Vector rotation;
  Vector scale{1, 1, 1};

  friend bool operator==(const Transform&, const Transform&) = default;
};

/// heading * pitch * bank * scale, with the position as offset. Multiples of 90 degrees turn
/// exactly.
Matrix ToMatrix(const Transform& transform);

/// The other way around. A mirror is a negative scale along x. What a matrix has of shear is lost;
/// `shear`, the largest cosine between two axes, tells how much there was. A column without length
/// counts as one of 1e-6. Of the angles that give the rotation, those nearest to `former` are
/// taken.
Transform ToTransform(const Matrix& matrix, const Vector& former, double& shear);

}  // namespace host
