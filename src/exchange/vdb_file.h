// Frames as OpenVDB files, and back. The only part that uses OpenVDB, and that a build without it
// leaves out.
//
// A file holds one frame: scalar channels as fog volumes, velocity as one vector grid. Its space is
// right-handed, as the grids' is: the host's z is negated. Voxel (i, j, k) is domain cell (i, j,
// k), so a sequence stays in place while the simulated region moves; cells of the ghost layer
// aren't written, and cells of exactly 0 are inactive. Metadata of file and grids: "frame" (int32),
// "frames_per_second" (double), "simulation_time" and "simulation_frame" (fractions of seconds,
// vec2d), "units" ("m" or "cm"), "box_lo" and "box_hi" (corners of the simulated region, vec3i).
#pragma once

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
  bool half = false;       // 16 bits a number
  std::map<int, std::string> names;  // by grid type; velocity has that of kGridVelocityX
};

/// False in a build without OpenVDB: the functions below then throw Exception.
bool has_vdb();

/// Writes the grids that have names. Throws Exception: a damaged grid, a file that can't be
/// written, of which nothing is left.
void write_vdb(const std::string& path, SimFrame& frame, const VdbOptions& options);

/// What stands in a VDB file beside the grids that a frame takes.
struct VdbContent {
  std::vector<std::string> left_out;      // grids of other names or kinds
  std::map<std::string, double> numbers;  // "frame" and "frames_per_second", where they are there
};

/// Reads the grids whose names are among `names`, by name to grid type, into `frame`; times are
/// left to the caller, but for simTime where the file tells. A vector grid is staggered if its
/// class says so. The ghost layer holds what the file has there. Throws Exception: a file that
/// can't be read, grids that differ in their voxels, voxels that aren't cubes, a box too large.
VdbContent read_vdb(SimFrame& frame, const std::string& path,
                    const std::map<std::string, int>& names, const VdbOptions& options);

}  // namespace nbx
