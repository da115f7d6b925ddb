#include "C4D/rendering/c4d_lighting.h"

#include <omp.h>

#include "C4D/rendering/host_volume.h"
#include "C4D/services/host_conversion.h"

namespace nbx {

namespace {

thread_local bool query_open = false;

}  // namespace

bool C4DLighting::in_query() { return query_open; }

host::VolumeData& C4DLighting::context() {
  return data_ ? *data_ : render_->GetVolumeData(omp_get_thread_num());
}

int C4DLighting::lightCount() { return context().GetLightCount(); }

int C4DLighting::lightFlag(int index) { return context().GetLight(index).type; }

Vec3d C4DLighting::lightPosition(int index) {
  return to_vector(context().GetLight(index).position);
}

Color C4DLighting::lightColor(int index) { return to_color(context().GetLight(index).color); }

bool C4DLighting::illuminate(int index, const RenderVolume& volume, const Vec3d& point,
                             Color& color, Vec3d& direction) {
  if (static_cast<const HostVolume&>(volume).excludedBy[index]) return false;
  host::Vector light, towards;
  query_open = true;
  const bool reached = context().Illuminate(index, {point[0], point[1], point[2]}, light, towards);
  query_open = false;
  color = to_color(light);
  direction = to_vector(towards);
  if (direction == Vec3d()) direction = lightPosition(index) - point;
  return reached;
}

}  // namespace nbx
