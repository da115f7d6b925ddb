// What the user sets for a run. The scene fills it in before each substep; within a substep it is
// constant.
#pragma once

#include <map>
#include <set>

#include "math/wavelet_noise.h"
#include "simulation/channel_params.h"

namespace nbx {

struct SolverParams {
  // Grid and time.
  double voxel_size = 1;     // edge of a voxel in scene units
  double unit_scale = 0.01;  // simulation units per scene unit
  double time_scale = 1;     // seconds of simulation time per second of the document
  double cfl = 2;            // largest distance that gas may travel in a substep, in voxels
  int max_substeps = 20;     // per frame; this limit wins over the CFL limit

  // Advection.
  int interp_points = 3;         // 3 = trilinear, 4 = cubic sampling
  bool adaptive_tracer = false;  // steps of at most `trace_tolerance`, else one midpoint step
  double trace_tolerance = 1;    // in voxels
  bool keep_traces = true;       // the channels share one trace; false: less memory

  // Forces.
  double vorticity = 0;         // strength of the confinement
  double drag = 0;              // fraction of the velocity lost per frame, 0 .. 1
  bool clamp_velocity = false;  // no gas crosses the whole grid within a frame
  NoiseParams noise;            // adds detail while its amplitude is above 0

  // Projection.
  double pressure_tolerance = 0.01;  // largest residual, 1/s
  int max_cycles = 10;               // V-cycles of the final solve
  int solid_iterations = 10;         // passes of the iteration around solids

  // Up-resolution: the velocity comes from the frames of a coarser run, and detail is added to it.
  bool upres = false;
  int upres_factor = 2;       // voxels per coarse voxel and axis
  int upres_extra_bands = 0;  // of detail that is larger than the coarse voxels
  double upres_noise_amount = 0.03;
  double upres_noise_persistence = 0.56;  // amplitude of a band over that of the band before

  // Active box.
  double velocity_box_threshold = 10;  // speed that counts as content; below 0: none does
  bool fit_to_walls = true;            // the box holds the solids and reaches out to closed faces

  // Channels.
  std::set<int> simulated_channels;  // ChannelKeys that exist in this run
  std::map<int, ChannelParams> channel_params = default_channel_params();
  bool mask_channels_by_solid = false;  // fill stored channels inside of solids
};

}  // namespace nbx
