#include "C4D/settings/scene_settings.h"

#include <algorithm>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/channel_settings.h"
#include "C4D/settings/volume_grid.h"
#include "util/exception.h"

namespace nbx {

namespace {

/// How far the center of the domain moves in world space within the next `seconds`, z negated.
Vec3d motion(const host::BaseObject& volume, double seconds) {
  const double now = volume.GetDocument().GetTime().Get();
  const host::BaseTime then = host::BaseTime::FromSeconds(now + seconds);
  const host::Vector center = volume.GetMp();
  return to_flipped_vector(volume.GetMgAt(then) * center) -
         to_flipped_vector(volume.GetMg() * center);
}

/// The wind relative to the domain: the wind of the world minus the motion of the domain.
Wind read_wind(const RunView& run, const SolverParams& params, host::BaseObject& volume,
               double dt) {
  const ParameterReader p(volume);
  Wind wind{normalized(to_flipped_vector(p(OVOLUME.WIND_DIRECTION))),
            p(OVOLUME.WIND_SPEED) * params.unit_scale};
  if (dt <= 0 || p(OVOLUME.WIND_WORLD)) return wind;
  const double document_dt = dt / run.clock.sim_time.length.value() * run.clock.frame_duration;
  const Vec3d moved = motion(volume, document_dt);
  if (moved == Vec3d()) return wind;
  const Vec3d felt = wind.velocity() - moved * (params.unit_scale / dt);
  wind.speed = length(felt);
  if (wind.speed > 0) wind.direction = felt * (1 / wind.speed);
  return wind;
}

void read_noise(SolverParams& params, const ParameterReader& p) {
  NoiseParams& noise = params.noise;
  set_noise_scale(noise, std::max(p(OVOLUME.NOISE_SIZE_MIN), 0.0),
                  std::max(p(OVOLUME.NOISE_SIZE_MAX), 0.0), params.voxel_size,
                  p(OVOLUME.NOISE_STRENGTH) * params.unit_scale, p(OVOLUME.NOISE_PERIOD));
  noise.persistence = p(OVOLUME.NOISE_PERSISTENCE);
  noise.driver_key = selected_channel(p, OVOLUME.NOISE_DRIVER);
  noise.driver_spline = to_spline(p(OVOLUME.NOISE_CURVE));
}

void read_step_params(SolverParams& params, const ParameterReader& p) {
  params.cfl = p(OVOLUME.CFL);
  params.adaptive_tracer = p(OVOLUME.ADAPTIVE_TRACER);
  params.max_substeps = p(OVOLUME.MAX_SUBSTEPS);
  params.velocity_box_threshold = p(OVOLUME.VELOCITY_THRESHOLD) * params.unit_scale;
  params.fit_to_walls = p(OVOLUME.FIT_TO_WALLS);
  params.mask_channels_by_solid = p(OVOLUME.MASK_SOLID);
  params.drag = std::clamp(p(OVOLUME.DRAG), 0.0, 1.0);
  params.clamp_velocity = p(OVOLUME.CLAMP_VELOCITY);
  params.vorticity = p(OVOLUME.VORTICITY);
  params.upres_extra_bands = std::max(p(OVOLUME.UPRES_EXTRA_BANDS), 0);
  params.upres_noise_amount = p(OVOLUME.UPRES_NOISE) * 0.01;
  const double persistence = std::min(p(OVOLUME.UPRES_PERSISTENCE), 1.0);
  params.upres_noise_persistence = persistence > 0 ? persistence : 1;
  read_noise(params, p);
  read_channel_params(params, p);
}

}  // namespace

Fraction time_scale(const host::BaseObject& volume) {
  const double scale = std::max(ParameterReader(volume)(OVOLUME.TIME_SCALE), 1e-6);
  return normalize({std::round(scale * 1e6), 1e6});
}

void read_run_settings(SolverParams& params, FrameSink& sink, const host::BaseObject& volume) {
  const ParameterReader p(volume);
  read_channel_sets(params, sink, p);
  params.upres_factor = std::max(p(OVOLUME.UPRES_FACTOR), 1);
  params.voxel_size = p(OVOLUME.VOXEL_SIZE) / (params.upres ? params.upres_factor : 1);
  params.interp_points = p(OVOLUME.ADVECT_CUBIC) ? 4 : 3;
  sink.cache_direct = p(OVOLUME.CACHE_DIRECT);
  params.keep_traces = !sink.cache_direct;
}

StepSettings read_step_settings(const RunView& run, host::BaseObject& volume, double dt) {
  const VolumeGrid grid = run_grid(volume, run.params);
  if (const std::string wrong = what_is_wrong(grid); !wrong.empty()) throw Exception(wrong);
  const ParameterReader p(volume);
  StepSettings step{run.params, run.domain};
  step.params.time_scale = time_scale(volume).value();
  read_step_params(step.params, p);
  step.domain.domain_box = grid.box();
  step.domain.world_to_grid = grid.world_to_grid;
  step.domain.dx = step.params.voxel_size * step.params.unit_scale;
  // The z axis of the grid is opposite to that of the host, so the two z faces change places.
  const Parameter<bool> faces[6] = {OVOLUME.CLOSED_X_MIN, OVOLUME.CLOSED_X_MAX,
                                    OVOLUME.CLOSED_Y_MIN, OVOLUME.CLOSED_Y_MAX,
                                    OVOLUME.CLOSED_Z_MAX, OVOLUME.CLOSED_Z_MIN};
  for (int f = 0; f < 6; ++f) step.domain.face_closed[f] = p(faces[f]) ? 1 : 0;
  step.domain.wind = read_wind(run, step.params, volume, dt);
  return step;
}

}  // namespace nbx
