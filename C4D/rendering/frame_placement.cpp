#include "C4D/rendering/frame_placement.h"

#include <cmath>
#include <optional>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/saved_scene.h"
#include "C4D/services/host_access.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/settings/volume_grid.h"

namespace nbx {

namespace {

Affine3d flip_z() {
  Affine3d flip = Affine3d::identity();
  flip.rows[2][2] = -1;
  return flip;
}

// From world coordinates of the host to domain cells, at the time of the simulation.
Affine3d world_to_cells(const SimFrame& frame) {
  const GridMatrix& m = frame.grids.begin()->second.gridMatrix;  // for row vectors, z flipped
  Affine3d to_cells;
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column)
      to_cells.rows[row][column] = m[4 * column + row];
    to_cells.translation[row] = m[12 + row];
  }
  return to_cells * flip_z();
}

/// The domain of the run that made the frames: of the volume's voxels, or of their parts.
VolumeGrid domain(const host::BaseObject& volume, bool upres) {
  const ParameterReader p(volume);
  return volume_grid(volume, p(OVOLUME.VOXEL_SIZE), upres ? p(OVOLUME.UPRES_FACTOR) : 1);
}

Affine3d object_to_domain(const host::BaseObject& volume, bool upres) {
  return domain(volume, upres).world_to_grid * to_affine(volume.GetMg());
}

bool same_voxels(const Affine3d& a, const Affine3d& b) {
  const double x = length(a.rows[0]), y = length(b.rows[0]);
  return std::abs(x - y) <= 1e-6 * y;
}

// Whether this can be a domain in its object's space: cubes along the axes, with a whole number of
// them on each side of the origin.
bool is_domain(const Affine3d& to_cells) {
  const double g = to_cells.rows[0][0];
  const Vec3d diagonal(g, g, -g);
  if (!(g > 0)) return false;
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) {
      const double wanted = a == b ? diagonal[a] : 0;
      if (std::abs(to_cells.rows[a][b] - wanted) > 1e-6 * g) return false;
    }
    const double edge = to_cells.translation[a] + 0.5;
    if (std::abs(edge - std::round(edge)) > 1e-4) return false;
  }
  return true;
}

// From the space of the saved object to domain cells. The matrix of a frame belongs to some time
// within the frame, so if the object moved then, the domain is taken from the object's size.
std::optional<Affine3d> as_saved(const host::BaseObject& saved, const SimFrame& frame, bool upres) {
  host::BaseDocument& document = saved.GetDocument();
  const auto object_at = [&](const host::BaseTime& time) {
    document.SetTime(time);
    document.ExecutePasses(nullptr, true, false, false);
    return to_affine(saved.GetMg());
  };
  const FrameTime& t = frame.frameTime;
  const Affine3d before = object_at(host::BaseTime::FromSeconds(t.time.value() - t.length.value()));
  const Affine3d object = object_at(to_base_time(t.time));
  const Affine3d stored = world_to_cells(frame) * object;
  if (object == before && is_domain(stored)) return stored;
  const Affine3d from_size = object_to_domain(saved, upres);
  if (same_voxels(stored, from_size)) return from_size;
  return {};
}

// Places the frame in the current domain of the object if it fits, otherwise in the world.
Affine3d as_it_is_now(const host::BaseObject& volume, const SimFrame& frame, bool upres) {
  const Affine3d stored = world_to_cells(frame), object = to_affine(volume.GetMg());
  const VolumeGrid grid = domain(volume, upres);
  const IntBox box = frame.box();
  const Affine3d now = object_to_domain(volume, upres);
  // Without a saved scene the object may have had no scale when the run was made.
  const bool fits = same_voxels(stored, grid.world_to_grid) || same_voxels(stored, now);
  return fits && grid.box().contains(box.lo) && grid.box().contains(box.hi) ? now : stored * object;
}

}  // namespace

const host::BaseObject* FramePlacement::saved_volume(const host::BaseObject& volume,
                                                     const std::string& directory) {
  const std::string path = autosave_file(directory);
  std::error_code error;
  const auto written = std::filesystem::last_write_time(path, error);
  if (error || !host_services()) return nullptr;
  if (path != path_ || written != written_) {
    saved_ = host_services()->LoadDocument({path});
    path_ = path;
    written_ = written;
  }
  return saved_ ? same_volume(volume, *saved_) : nullptr;
}

Affine3d FramePlacement::object_to_cells(const host::BaseObject& volume, const SimFrame& frame,
                                         const std::string& directory) {
  const bool upres = upres_source(directory) != directory;
  std::optional<Affine3d> to_domain;
  if (const host::BaseObject* saved = saved_volume(volume, directory))
    to_domain = as_saved(*saved, frame, upres);
  if (!to_domain) to_domain = as_it_is_now(volume, frame, upres);
  to_domain->translation = to_domain->translation - vector_cast<double>(frame.offset());
  return *to_domain;
}

}  // namespace nbx
