// The settings of a run: one record, owned by Simulation3D, to which every system keeps a pointer.
//
// Units. Distances in the solver are simulation units = scene units * unit_scale; dx is the voxel
// edge in them. Speeds are simulation units per second, dt is in seconds of simulation time. Cells
// are indexed in domain coordinates: (0, 0, 0) is the low corner of the domain, cell centers lie at
// integers. Fields hold `active_box` plus a ghost layer: local index i is domain cell
// i + active_box.lo - 1.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <set>

#include "cache/bfs.h"
#include "math/affine_transform.h"
#include "math/int_box.h"
#include "math/wavelet_noise.h"
#include "simulation/channel_params.h"
#include "util/units.h"

namespace nbx {

struct SimSettings {
  std::shared_ptr<BFS> target_cache;  // receives frames; may be empty
  bool cache_direct = false;          // write frames at once, keep no trace fields: saves memory

  FrameTime sim_time;        // simulation clock and frame length, both times time_scale
  FrameTime start_time;      // simulation start, unscaled document frame length
  int step_index = 0;        // substeps done in this frame
  double frame_elapsed = 0;  // seconds of this frame already simulated

  int solid_iterations = 10;  // passes of the solid iteration in `project`
  int max_cycles = 10;        // V-cycles of the last solve in `project`
  int max_substeps = 20;
  std::array<int, 6> face_closed{};  // x-, x+, y-, y+, z-, z+: 1 = a wall, 0 = open
  int interp_points = 3;             // 3 = trilinear, 4 = cubic sampling in advection
  IntBox domain_box;
  IntBox active_box;                              // the simulated region
  Affine3d world_to_grid = Affine3d::identity();  // host world coordinates to domain cells

  double pressure_tolerance = 0.01;
  double velocity_box_threshold = 10;  // speed that counts as content; below 0: never
  double voxel_size = 1;               // scene units
  double unit_scale = kMetersPerUnit;  // simulation units per scene unit
  double dx = kMetersPerUnit;          // voxel_size * unit_scale
  double cfl = 2;                      // largest advection distance per step, in voxels
  double trace_tolerance = 1;          // largest step of the adaptive tracer, in voxels
  double time_scale = 1;
  double dt = 0;              // length of the current substep
  double frame_duration = 1;  // seconds of one document frame, unscaled: the unit of decay and drag

  double vorticity = 0;  // strength of the confinement; 0 = none
  double drag = 0;       // fraction of the velocity lost per frame, 0 .. 1

  bool adaptive_tracer = false;
  bool mask_channels_by_solid = false;  // stored channels are filled inside of solids
  bool clamp_velocity = false;          // no sample crosses the whole grid within a frame
  bool fit_to_walls = true;  // the active box honors keep_box and reaches out to closed faces

  std::set<int> cached_channels;     // ChannelKeys written to frames
  std::set<int> simulated_channels;  // ChannelKeys that exist in this run
  std::map<int, ChannelParams> channel_params;

  NoiseParams noise;  // detail is added while its amplitude is above 0

  Vec3d wind_direction{1, 0, 0};  // unit vector in grid space
  double wind_speed = 0;          // 0 = no wind
};

/// Which domain faces are walls now: a face is closed only while the active box touches it. An
/// active box that hasn't reached the domain's edge is open on that side.
std::array<int, 6> closed_faces(const SimSettings& settings);

}  // namespace nbx
