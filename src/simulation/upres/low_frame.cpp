#include "simulation/upres/low_frame.h"

#include "simulation/domain.h"

namespace nbx {

LowFrame open_low_frame(const std::shared_ptr<BFS>& source, int frame) {
  LowFrame low;
  low.frame = SlotHandle(source, frame, 0, true, true);  // nobody needs it a second time
  if (!low.frame) return {};
  Domain covered;
  covered.active_box = low.box = low.frame->box();
  std::array<FieldHandle, 3> velocity;
  for (int axis = 0; axis < 3; ++axis) {
    velocity[axis] = low.frame->grid(kGridVelocityX + axis);
    if (!velocity[axis] || velocity[axis]->dims() != covered.face_dims(axis)) return {};
  }
  low.velocity = std::move(velocity);
  return low;
}

IntBox refined(const IntBox& box, int factor) {
  if (box.empty()) return {};
  const Vec3i lo = box.lo * factor;
  return {lo, lo + box.size() * factor - Vec3i(1, 1, 1)};
}

}  // namespace nbx
