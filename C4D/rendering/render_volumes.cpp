#include "C4D/rendering/render_volumes.h"

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/post_effect_parameters.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/rendering/c4d_lighting.h"
#include "C4D/rendering/simulate_on_render.h"
#include "C4D/services/host_conversion.h"
#include "C4D/services/texts.h"
#include "C4D/settings/shading_settings.h"
#include "C4D/settings/volume_cache.h"
#include "cache/cache_registry.h"
#include "cache/stale_frames.h"
#include "util/thread_waiting.h"

namespace nbx {

namespace {

bool wants_frame(const VolumeParams& params) {
  return params.smoke.channel != kNoGrid || params.fire.channel != kNoGrid;
}

std::string name_of(const HostVolume& volume) {
  return "volume \"" + volume.object->GetName() + "\": ";
}

std::string frame_text(int frame) { return "frame " + std::to_string(frame); }

void report_missing(const HostVolume& volume, int frame, const std::shared_ptr<BFS>& cache,
                    host::BaseRender& render) {
  const std::string what = cache ? frame_text(frame) + " is not in the cache " + cache->directory()
                                 : "there is no cache to read " + frame_text(frame) + " from";
  render.ReportMissing(name_of(volume) + what +
                       "; simulate it, or choose the cache with --cache or cache_name");
}

// Warns once per volume. While the render simulates a volume, the mark may lag behind the frames.
void warn_of_stale_frame(HostVolume& volume, int frame, const BFS& cache,
                         host::BaseRender& render) {
  if (volume.warned_of_stale || volume.simulation) return;
  const std::set<int> stale = stale_frames(cache.directory());
  if (!stale.contains(frame)) return;
  volume.warned_of_stale = true;
  render.Warning(name_of(volume) + frame_text(frame) + " belongs to an earlier run: simulate " +
                 named_frames(stale) + " of the cache " + cache.directory() + " again");
}

// Reports channels that the frame doesn't contain, to explain an empty picture.
void warn_of_channels(const HostVolume& volume, const VolumeParams& params, int frame,
                      host::BaseRender& render) {
  const auto missing = [&](const ShaderParams& shader, bool on, const char* what) {
    if (shader.channel > kNoGrid && !on && !volume.frame->grids.contains(shader.channel))
      render.Warning(name_of(volume) + frame_text(frame) + " contains no " +
                     grid_type_name(shader.channel) + ", so there is no " + what);
  };
  missing(params.smoke, volume.traced->smoke.on, "smoke");
  missing(params.fire, volume.traced->fire.on, "fire");
}

// Read once per frame, since the exclusion list of a light may be long.
void read_light_exclusions(HostVolume& volume, host::BaseRender& render) {
  const host::VolumeData& lights = render.GetVolumeData(0);
  std::vector<bool>& excluded = volume.traced->excluded_lights;
  excluded.clear();
  for (std::int32_t n = 0; n < lights.GetLightCount(); ++n)
    excluded.push_back(!lights.GetLight(n).Reaches(volume.object));
}

void prepare(HostVolume& volume, host::BaseRender& render, const host::BaseDocument& document) {
  const host::BaseTime now = document.GetTime();
  VolumeParams params = shading_params(*volume.object);
  if (!wants_frame(params)) return;
  const int number = frame_at_time(*volume.object, now);
  const std::string directory = shown_cache(*volume.object);
  const std::shared_ptr<BFS> cache = directory.empty() ? nullptr : getCache(directory);
  volume.frame = SlotHandle(cache, number, 0, true);
  if (!volume.frame) {
    report_missing(volume, number, cache, render);
    return;
  }
  warn_of_stale_frame(volume, number, *cache, render);
  if (volume.frame->grids.empty()) return;

  params.frames_per_second = document.GetFps().Value();
  params.seconds = now.Get();
  params.world_to_object = inverse(to_affine(volume.object->GetMg()));
  params.object_to_cell =
      volume.placement.object_to_cells(*volume.object, *volume.frame, cache->directory());
  RenderVolume& traced = *volume.traced;
  prepare_volume(traced, *volume.frame, params);
  read_compositing(traced, *volume.object);
  warn_of_channels(volume, params, number, render);

  traced.light_field.reset();
  if (!traced.smoke.on) return;
  read_light_exclusions(volume, render);
  traced.light_field = make_light_field(*volume.object, to_vector(render.GetCameraPosition()));
}

bool prepare_light(HostVolume& volume, host::BaseRender& render) {
  const auto progress = [&](int done, int total, int stage, int stages) {
    if (done == 0)
      render.SetStatusText(volume.object->GetName() + ": " + texts::kLightInSmoke + " " +
                           std::to_string(stage) + "/" + std::to_string(stages));
    render.SetProgress(total > 0 ? static_cast<double>(done) / total : 1);
    return render.TestBreak();
  };
  C4DLighting lighting(render);
  return volume.traced->light_field->prepare(lighting, *volume.traced, render.GetThreadCount(),
                                             progress);
}

}  // namespace

void collect_volumes(RenderVolumes& volumes, host::BaseObject* first) {
  for (host::BaseObject* object = first; object; object = object->GetNext()) {
    if (!object->GetDeformMode()) continue;
    if (object->GetType() == kVolumeObject && host::IsVisibleInRender(*object)) {
      const HostVolume& added = volumes.hosted.emplace_back(*object);
      volumes.renderer.volumes.push_back(added.traced);
    }
    collect_volumes(volumes, object->GetDown());
  }
}

void read_steps(VolumeRenderer& renderer, const host::BaseVideoPost& node) {
  const ParameterReader data(node);
  renderer.adaptive = data(VPVOLUME.ADAPTIVE);
  renderer.adaptiveThreshold = data(VPVOLUME.ADAPTIVE_THRESHOLD);
}

bool prepare_all(RenderVolumes& volumes, host::BaseRender& render,
                 const host::BaseVideoPost& node) {
  const ThreadWaiting thread_waiting;
  if (!simulate_up_to_frame(volumes.hosted, render)) return false;
  render.SetStatusText(texts::kPreparingVolumes);
  VolumeRenderer& renderer = volumes.renderer;
  renderer.active = false;
  for (HostVolume& volume : volumes.hosted) {
    prepare(volume, render, render.GetDocument());
    renderer.active = renderer.active || (volume.traced->ready && volume.traced->shows());
    if (render.TestBreak()) return false;
  }
  read_steps(renderer, node);
  if (!renderer.active) return true;
  for (HostVolume& volume : volumes.hosted)
    if (volume.traced->light_field && !prepare_light(volume, render)) return false;
  return true;
}

void release_frames(RenderVolumes& volumes) {
  for (auto volume = volumes.hosted.rbegin(); volume != volumes.hosted.rend(); ++volume) {
    volume->traced->release_frame();
    volume->frame.release();
  }
}

}  // namespace nbx
