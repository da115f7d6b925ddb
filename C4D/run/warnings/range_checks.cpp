#include <cmath>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/warnings/scene_checks.h"
#include "C4D/run/warnings/wording.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/scene_settings.h"
#include "C4D/settings/volume_grid.h"
#include "C4D/sources/source_tags.h"

namespace nbx {

namespace {

constexpr int kMostFramesOfSolids = 250;

/// What moves the gas fastest, in voxels a frame of the document.
struct Fastest {
  std::string what;
  double voxels = 0;

  void take(const std::string& cause, double speed) {
    if (speed > voxels) *this = {cause, speed};
  }
};

/// How far the corners of the solid's meshes move in a frame, in units.
double solid_speed(const host::BaseTag& tag, const RunTimes& times) {
  double farthest = 0;
  for (const SourceMesh& source : solid_meshes(tag)) {
    const Vec3d center = to_vector(source.mesh->GetMp()), half = to_vector(source.mesh->GetRad());
    const WorldBox box{center - half, center + half};
    FrameTime now = times.start;
    Affine3d before = to_affine(source.mesh->GetMgAt(to_base_time(now.time)));
    for (int f = 0; f < kMostFramesOfSolids && fraction_less(now.time, times.end.time); ++f) {
      now = next_frame(now);
      const Affine3d after = to_affine(source.mesh->GetMgAt(to_base_time(now.time)));
      for (int n = 0; n < 8; ++n)
        farthest = std::max(farthest, length(after(box.corner(n)) - before(box.corner(n))));
      before = after;
    }
  }
  return farthest;
}

Fastest find_fastest(const SceneSurvey& survey) {
  const double voxel_size = survey.p(OVOLUME.VOXEL_SIZE);
  const double frame = survey.times.start.length.value() * time_scale(survey.volume).value();
  Fastest fastest;
  fastest.take("the wind", survey.wind * frame / voxel_size);
  for (const EmitterFacts& e : survey.emitters) {
    if (!e.on || !e.reaches) continue;
    const std::string name = "emitter \"" + e.name() + "\"";
    fastest.take(name, e.speed * frame / voxel_size);
    if (e.solid)
      fastest.take("the motion of " + name, solid_speed(*e.tag, survey.times) / voxel_size);
  }
  return fastest;
}

std::string range_text(std::int64_t first, std::int64_t last) {
  return std::to_string(first) + " to " + std::to_string(last);
}

}  // namespace

void check_range(SceneWarnings& all, const SceneSurvey& survey) {
  const host::BaseDocument& document = survey.volume.GetDocument();
  const auto fps = document.GetFps();
  const std::int64_t first = document.GetMinTime().GetFrame(fps);
  const std::int64_t last = document.GetMaxTime().GetFrame(fps);
  const bool starts_early = survey.times.start.frame() < first;
  if (!starts_early && survey.times.end.frame() <= last) return;
  all.push_back({survey.name(), starts_early ? "time_start" : "time_end",
                 survey.frames() + " are not all in the document, which has frames " +
                     range_text(first, last) +
                     ": simulate frames of the document, or change its start and end"});
}

void check_voxels(SceneWarnings& all, const SceneSurvey& survey) {
  if (!survey.has_few_voxels()) return;
  const Vec3d n = volume_grid(survey.volume, survey.p(OVOLUME.VOXEL_SIZE)).cells;
  all.push_back({survey.name(), "size",
                 "the domain has only " + number_text(n[0]) + " x " + number_text(n[1]) + " x " +
                     number_text(n[2]) +
                     " voxels; lengths are in units of 0.01 m: make size larger or voxel_size "
                     "smaller"});
}

// The frames end within max_substeps, however far the gas then travels in each. Twice as far as cfl
// allows is where the picture suffers.
void check_substeps(SceneWarnings& all, const SceneSurvey& survey) {
  const Fastest fastest = find_fastest(survey);
  const double cfl = survey.p(OVOLUME.CFL), most = survey.p(OVOLUME.MAX_SUBSTEPS);
  const double wanted = std::ceil(fastest.voxels / cfl);
  if (!(wanted > 2 * most) || survey.volume.IsAnimated(OVOLUME.CFL) ||
      survey.volume.IsAnimated(OVOLUME.MAX_SUBSTEPS))
    return;
  all.push_back({survey.name(), "max_substeps",
                 "max_substeps is " + number_text(most) + ", but " + fastest.what +
                     " carries gas " + number_text(std::round(fastest.voxels)) +
                     " voxels in a frame, which takes " + number_text(wanted) +
                     " substeps at cfl " + number_text(cfl) + ": raise max_substeps or cfl"});
}

}  // namespace nbx
