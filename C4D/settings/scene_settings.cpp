#include "C4D/settings/scene_settings.h"

#include <algorithm>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/channel_settings.h"
#include "C4D/settings/volume_grid.h"
#include "util/exception.h"

namespace nbx {

namespace {

/// How far the domain's center moves in world space until `seconds` from now, z negated.
Vec3d motion(const host::BaseObject& volume, double seconds) {
  const double now = volume.GetDocument().GetTime().Get();
  const host::BaseTime then = host::BaseTime::FromSeconds(now + seconds);
  const host::Vector center = volume.GetMp();
  return to_flipped_vector(volume.GetMgAt(then) * center) -
         to_flipped_vector(volume.GetMg() * center);
}

/// The wind as the domain feels it: that of the world less the domain's own motion.
void read_wind(SimSettings& s, host::BaseObject& volume, double dt) {
  const ParameterReader p(volume);
  s.wind_direction = normalized(to_flipped_vector(p(OVOLUME.WIND_DIRECTION)));
  s.wind_speed = p(OVOLUME.WIND_SPEED) * s.unit_scale;
  if (dt <= 0 || p(OVOLUME.WIND_WORLD)) return;
  const double document_dt = dt / s.sim_time.length.value() * s.frame_duration;
  const Vec3d moved = motion(volume, document_dt);
  if (moved == Vec3d()) return;
  const Vec3d wind = s.wind_direction * s.wind_speed - moved * (s.unit_scale / dt);
  s.wind_speed = length(wind);
  if (s.wind_speed > 0) s.wind_direction = wind * (1 / s.wind_speed);
}

void read_noise(SimSettings& s, const ParameterReader& p) {
  set_noise_scale(s.noise, std::max(p(OVOLUME.NOISE_SIZE_MIN), 0.0),
                  std::max(p(OVOLUME.NOISE_SIZE_MAX), 0.0), s.voxel_size,
                  p(OVOLUME.NOISE_STRENGTH) * s.unit_scale, p(OVOLUME.NOISE_PERIOD));
  s.noise.persistence = static_cast<float>(p(OVOLUME.NOISE_PERSISTENCE));
  s.noise.driver_key = selected_channel(p, OVOLUME.NOISE_DRIVER);
  s.noise.driver_spline = to_spline(p(OVOLUME.NOISE_CURVE));
}

void read_motion(SimSettings& s, const ParameterReader& p) {
  s.drag = std::clamp(p(OVOLUME.DRAG), 0.0, 1.0);
  s.clamp_velocity = p(OVOLUME.CLAMP_VELOCITY);
  s.vorticity = p(OVOLUME.VORTICITY);
  read_noise(s, p);
}

}  // namespace

Fraction time_scale(const host::BaseObject& volume) {
  const double scale = std::max(ParameterReader(volume)(OVOLUME.TIME_SCALE), 1e-6);
  return normalize({std::round(scale * 1e6), 1e6});
}

void read_run_settings(SimSettings& s, const host::BaseObject& volume) {
  const ParameterReader p(volume);
  read_channel_sets(s, p);
  s.voxel_size = p(OVOLUME.VOXEL_SIZE);
  s.dx = s.voxel_size * s.unit_scale;
  s.interp_points = p(OVOLUME.ADVECT_CUBIC) ? 4 : 3;
  s.cache_direct = p(OVOLUME.CACHE_DIRECT);
}

void read_step_settings(SimSettings& s, host::BaseObject& volume, double dt) {
  const VolumeGrid grid = volume_grid(volume, s.voxel_size);
  if (const std::string wrong = what_is_wrong(grid); !wrong.empty()) throw Exception(wrong);
  s.world_to_grid = grid.world_to_grid;
  s.domain_box = grid.box();

  const ParameterReader p(volume);
  s.cfl = p(OVOLUME.CFL);
  s.adaptive_tracer = p(OVOLUME.ADAPTIVE_TRACER);
  s.time_scale = time_scale(volume).value();
  s.max_substeps = p(OVOLUME.MAX_SUBSTEPS);
  s.velocity_box_threshold = p(OVOLUME.VELOCITY_THRESHOLD) * s.unit_scale;
  s.fit_to_walls = p(OVOLUME.FIT_TO_WALLS);
  s.mask_channels_by_solid = p(OVOLUME.MASK_SOLID);
  // The grid's z axis runs against the host's, so the two z faces change places.
  const Parameter<bool> faces[6] = {OVOLUME.CLOSED_X_MIN, OVOLUME.CLOSED_X_MAX,
                                    OVOLUME.CLOSED_Y_MIN, OVOLUME.CLOSED_Y_MAX,
                                    OVOLUME.CLOSED_Z_MAX, OVOLUME.CLOSED_Z_MIN};
  for (std::size_t f = 0; f < 6; ++f) s.face_closed[f] = p(faces[f]) ? 1 : 0;

  read_motion(s, p);
  read_channel_params(s, p);
  read_wind(s, volume, dt);
}

}  // namespace nbx
