// Converts frames to OpenVDB files and back. Nothing else uses OpenVDB, and a build without OpenVDB
// leaves this part out.
//
// A file contains one frame: scalar channels as fog volumes, velocity as one vector grid. The space
// of file and grids is right-handed: the host's z is negated. Voxel (i, j, k) is domain cell (i, j,
// k), so a sequence stays in place while the simulated region moves. The ghost layer isn't written,
// and cells of exactly 0 are inactive. The channel solid isn't a fog volume, and its values are at
// most kSolidBand (channel_values.h); cells with this value are inactive.
//
// Metadata of file and grids: "frame" (int32), "frames_per_second" (double), "simulation_time" and
// "simulation_frame" (fractions of seconds, vec2d), "units" of lengths ("m" or "cm"), "box_lo" and
// "box_hi" (corners of the simulated region, vec3i). Grids with a unit have "value_unit".
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cache/sim_frame.h"

namespace nbx {

struct VdbOptions {
  bool meters = true;      // lengths in meters; else in host units of 0.01 m
  bool z_up = false;       // the file's z axis points up; else y
  bool staggered = false;  // velocity on the faces below each voxel, along the grid's own axes;
                           // else at its center, along the axes of the world
  bool half = false;       // 16 bits per number, at most 65504 in magnitude
  std::map<int, std::string> names;  // by grid type; velocity has the one of kGridVelocityX
};

/// False in a build without OpenVDB: the functions below then throw Exception.
bool has_vdb();

/// Writes the grids that have names. Returns the number of voxels whose values were limited because
/// 16 bits can't hold them. Throws Exception for a damaged grid and for a file that can't be
/// written. A file that is already there stays until the new one is complete.
std::uint64_t write_vdb(const std::string& path, SimFrame& frame, const VdbOptions& options);

/// What a VDB file holds besides the grids of the frame.
struct VdbContent {
  std::vector<std::string> left_out;      // grids with other names or types
  std::map<std::string, double> numbers;  // "frame" and "frames_per_second", if present
};

/// Reads the grids listed in `names` (name to grid type) into `frame`. The caller sets the times,
/// except simTime if the file has it. A vector grid is staggered if its grid class is. The ghost
/// layer gets the file's values there. Throws Exception for a file that can't be read, grids with
/// different voxels, voxels that aren't cubes, and a box that is too large.
VdbContent read_vdb(SimFrame& frame, const std::string& path,
                    const std::map<std::string, int>& names, const VdbOptions& options);

}  // namespace nbx
