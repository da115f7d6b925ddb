#include "C4D/render_volumes.h"

#include <algorithm>
#include <cmath>

#include "C4D/c4d_lighting.h"
#include "C4D/host_conversion.h"
#include "C4D/host_volume.h"
#include "C4D/load_string.h"
#include "C4D/post_effect_parameters.h"
#include "C4D/shading_settings.h"
#include "C4D/simulate_on_render.h"
#include "C4D/volume_cache.h"
#include "C4D/volume_grid.h"
#include "C4D/volume_parameters.h"

namespace nbx {

namespace {

Affine3d flip_z() {
  Affine3d flip = Affine3d::identity();
  flip.rows[2][2] = -1;
  return flip;
}

// World coordinates of the host to domain cells, as they were when the frame was simulated.
Affine3d stored_world_to_cells(const SimFrame& frame) {
  const GridMatrix& m = frame.grids.begin()->second.gridMatrix;  // for row vectors, z flipped
  Affine3d to_cells;
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column)
      to_cells.rows[row][static_cast<int>(column)] = m[4 * column + row];
    to_cells.translation[static_cast<int>(row)] = m[12 + row];
  }
  return to_cells * flip_z();
}

double row_length(const Affine3d& m) { return std::sqrt(dot(m.rows[0], m.rows[0])); }

// The gas goes with its object, which may have been moved since the run; but a frame of another
// voxel size than the object's stands where it was simulated, since the object no longer tells its
// domain.
Affine3d world_to_cells(const host::BaseObject& volume, const SimFrame& frame) {
  const double voxel = volume.GetDataInstance().GetReal(OVOLUME_VOXEL_SIZE, 1);
  const Affine3d now = volume_grid(volume, voxel).world_to_grid;
  const Affine3d then = stored_world_to_cells(frame);
  const double edge = 1 / row_length(then);
  const auto same = [&](double size) { return std::abs(edge - size) <= 1e-6 * size; };
  return same(voxel) || same(1 / row_length(now)) ? now : then;
}

Affine3d shift(const Vec3i& by) {
  Affine3d move = Affine3d::identity();
  move.translation = vector_cast<double>(by);
  return move;
}

bool wants_frame(const VolumeParams& params) {
  return params.smoke.channel != kNoGrid || params.fire.channel != kNoGrid;
}

std::string place(const HostVolume& volume, int frame) {
  return "volume \"" + volume.object->GetName() + "\": frame " + std::to_string(frame);
}

void report_missing(const HostVolume& volume, int frame, const std::shared_ptr<BFS>& cache,
                    host::BaseRender& render) {
  if (cache)
    render.ReportMissing(place(volume, frame) + " is not in the cache " + cache->directory() +
                         ": simulate it, or choose the cache with --cache or cache_name");
  else
    render.ReportMissing(
        place(volume, frame) +
        " has no cache: simulate it, and choose the cache with --cache or cache_name");
}

// Says which channels the frame lacks, so that an empty picture explains itself.
void warn_of_channels(const HostVolume& volume, const VolumeParams& params, int frame,
                      host::BaseRender& render) {
  const auto missing = [&](const ShaderParams& shader, bool on, const char* what) {
    if (shader.channel > kNoGrid && !on && !volume.frame->grids.contains(shader.channel))
      render.Warning(place(volume, frame) + " holds no " + grid_type_name(shader.channel) +
                     ", so there is no " + what);
  };
  missing(params.smoke, volume.smoke.on, "smoke");
  missing(params.fire, volume.fire.on, "fire");
}

// Asked once a frame, since a light's list may be long.
void read_light_exclusions(HostVolume& volume, host::BaseRender& render) {
  const host::VolumeData& lights = render.GetVolumeData(0);
  volume.excludedBy.clear();
  for (std::int32_t n = 0; n < lights.GetLightCount(); ++n)
    volume.excludedBy.push_back(!lights.GetLight(n).Reaches(volume.object));
}

void prepare_volume(HostVolume& volume, host::BaseRender* render,
                    const host::BaseDocument& document) {
  const host::BaseTime now = document.GetTime();
  VolumeParams params = shading_params(*volume.object);
  if (!wants_frame(params)) return;
  if (render) simulate_up_to_frame(volume, *render);
  const int number = frame_at_time(*volume.object, now);
  const std::shared_ptr<BFS> cache = volume_cache(*volume.object, false);
  volume.frame = SlotHandle(cache, number, 0, true);
  if (!volume.frame) {
    if (render) report_missing(volume, number, cache, *render);
    return;
  }
  if (volume.frame->grids.empty()) return;

  params.framesPerSecond = document.GetFps().Value();
  const std::int32_t start = render ? render->GetFirstFrame() : 0;
  params.secondsSinceStart = now.Get() - host::BaseTime::FromFrame(start, document.GetFps()).Get();
  const Affine3d object = to_affine(volume.object->GetMg());
  params.worldToObject = inverse(object);
  params.objectToCell =
      shift(-volume.frame->offset()) * world_to_cells(*volume.object, *volume.frame) * object;
  nbx::prepare_volume(volume, *volume.frame, params);
  read_compositing(volume, *volume.object);
  if (render) warn_of_channels(volume, params, number, *render);

  volume.lightField.reset();
  if (!volume.smoke.on || !render) return;
  read_light_exclusions(volume, *render);
  volume.lightField = make_light_field(*volume.object, to_vector(render->GetCameraPosition()));
}

bool prepare_light(HostVolume& volume, host::BaseRender& render) {
  const auto progress = [&](int done, int total, int stage, int stages) {
    if (done == 0)
      render.SetStatusText(volume.object->GetName() + ": " + load_string(10097) + " " +
                           std::to_string(stage) + "/" + std::to_string(stages));
    render.SetProgress(total > 0 ? static_cast<double>(done) / total : 1);
    return render.TestBreak();
  };
  C4DLighting lighting(render);
  return volume.lightField->prepare(lighting, volume, render.GetThreadCount(), progress);
}

HostVolume& host_volume(RenderVolume& volume) { return static_cast<HostVolume&>(volume); }

}  // namespace

void collect_volumes(VolumeRenderer& renderer, host::BaseObject* first) {
  for (host::BaseObject* object = first; object; object = object->GetNext()) {
    if (!object->GetDeformMode()) continue;
    if (object->GetType() == kVolumeObject) {
      auto volume = std::make_shared<HostVolume>();
      volume->object = object;
      renderer.volumes.push_back(std::move(volume));
    }
    collect_volumes(renderer, object->GetDown());
  }
}

bool prepare_all(VolumeRenderer& renderer, host::BaseRender* render,
                 const host::BaseDocument& document, const host::BaseVideoPost& node) {
  if (render) render->SetStatusText(load_string(10077));
  renderer.active = false;
  for (const auto& volume : renderer.volumes) {
    prepare_volume(host_volume(*volume), render, document);
    renderer.active = renderer.active || (volume->ready && volume->shows());
    if (render && render->TestBreak()) return false;
  }
  if (!renderer.active) return true;

  const host::BaseContainer& data = node.GetDataInstance();
  renderer.adaptive = data.GetBool(VPVOLUME_ADAPTIVE);
  renderer.adaptiveThreshold = static_cast<float>(data.GetReal(VPVOLUME_ADAPTIVE_THRESHOLD));
  if (!render) return true;
  for (const auto& volume : renderer.volumes)
    if (volume->lightField && !prepare_light(host_volume(*volume), *render)) return false;
  return true;
}

void end_simulations(VolumeRenderer& renderer) {
  for (const auto& volume : renderer.volumes) end_simulation(host_volume(*volume));
}

void release_frames(VolumeRenderer& renderer) {
  for (auto volume = renderer.volumes.rbegin(); volume != renderer.volumes.rend(); ++volume) {
    (*volume)->releaseFrame();
    host_volume(**volume).frame.release();
  }
}

}  // namespace nbx
