// The spaces of frames and of VDB files. Row vectors, as in both.
#pragma once

#include <openvdb/openvdb.h>

#include "exchange/vdb_file.h"
#include "util/units.h"

namespace nbx {

/// From the frame's world, in host units with y up, to the file's world.
inline openvdb::Mat4d world_to_file(const VdbOptions& options) {
  const double s = options.meters ? kMetersPerUnit : 1;
  using Row = openvdb::Vec4d;
  const Row x(s, 0, 0, 0), y(0, s, 0, 0), z(0, 0, s, 0), origin(0, 0, 0, 1);
  return options.z_up ? openvdb::Mat4d(x, z, -y, origin) : openvdb::Mat4d(x, y, z, origin);
}

/// The directions of the grid's axes in the file's world, of length 1.
inline std::array<openvdb::Vec3d, 3> axes_of(const openvdb::Mat4d& cell_to_file) {
  std::array<openvdb::Vec3d, 3> axes;
  for (int a = 0; a < 3; ++a) {
    const openvdb::Vec4d row = cell_to_file.row(a);
    axes[a] = openvdb::Vec3d(row[0], row[1], row[2]).unit();
  }
  return axes;
}

/// Speeds in the file over those of the simulation, which are in meters per second.
inline double speed_scale(const VdbOptions& options) {
  return options.meters ? 1 : 1 / kMetersPerUnit;
}

inline openvdb::Coord to_coord(const Vec3i& v) { return {v[0], v[1], v[2]}; }

}  // namespace nbx
