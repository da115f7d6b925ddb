// The velocity that an up-resolution run takes from a frame of the coarse run.
#pragma once

#include <array>
#include <memory>

#include "cache/slot_handle.h"
#include "math/field_pool.h"
#include "math/int_box.h"

namespace nbx {

/// Holds the frame in its store until it is destroyed.
struct LowFrame {
  SlotHandle frame;
  IntBox box;                           // the simulated region, in cells of the coarse domain
  std::array<FieldHandle, 3> velocity;  // on the faces of the box and its ghost layer

  explicit operator bool() const { return velocity[0] != nullptr; }
  /// Dimensions of a field at cell centers.
  Vec3i dims() const { return box.size() + Vec3i(2, 2, 2); }
  /// The domain cell of index (0, 0, 0).
  Vec3i origin() const { return box.lo - Vec3i(1, 1, 1); }
};

/// Reads the frame of that number. Empty if it is missing or holds no velocity. Throws Exception
/// for a damaged file.
LowFrame open_low_frame(const std::shared_ptr<BFS>& source, int frame);

/// The cells of a grid that is `factor` times finer in the cells of `box`.
IntBox refined(const IntBox& box, int factor);

}  // namespace nbx
