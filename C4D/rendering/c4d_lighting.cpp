#include "C4D/rendering/c4d_lighting.h"

#include "C4D/services/host_conversion.h"
#include "render/render_volume.h"

namespace nbx {

host::VolumeData& C4DLighting::context(int thread) {
  return data_ ? *data_ : render_->GetVolumeData(thread);
}

int C4DLighting::lightCount() { return context(0).GetLightCount(); }

Vec3d C4DLighting::lightPosition(int index) {
  return to_vector(context(0).GetLight(index).position);
}

bool C4DLighting::illuminate(int index, const RenderVolume& volume, const Vec3d& point,
                             Color& color, Vec3d& direction, int thread) {
  if (volume.excluded_lights[index]) return false;
  host::VolumeData& lights = context(thread);
  host::Vector light, towards;
  const bool reached = lights.Illuminate(index, {point[0], point[1], point[2]}, light, towards);
  color = {float(light.x), float(light.y), float(light.z)};
  direction = to_vector(towards);
  if (direction == Vec3d()) direction = to_vector(lights.GetLight(index).position) - point;
  return reached;
}

}  // namespace nbx
