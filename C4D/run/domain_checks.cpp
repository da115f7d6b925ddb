#include "C4D/run/domain_checks.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "C4D/settings/scene_settings.h"
#include "C4D/sources/source_tags.h"
#include "cache/bcf_format.h"
#include "simulation/workspace.h"
#include "util/format_size.h"
#include "util/memory.h"

namespace nbx {

namespace {

std::string domain_text(const Vec3d& n) {
  std::ostringstream text;
  text.precision(12);
  text << "a domain of " << n[0] << " x " << n[1] << " x " << n[2] << " voxels ";
  return text.str();
}

std::string size_text(double bytes) {
  return format_size(static_cast<std::uint64_t>(std::min(bytes, 1e19)), 2);
}

/// The next number above x that has two digits.
double next_of_two_digits(double x) {
  const double unit = std::pow(10, std::floor(std::log10(x)) - 1);
  return std::floor(x / unit * (1 + 1e-9) + 1) * unit;
}

/// "voxel_size 1.7 would fit", where fits(grid) says which grids do. Empty if none does.
template <class Fits>
std::string fitting_voxel_size(const host::BaseObject& volume, double voxel_size, Fits fits) {
  constexpr double kMost = 1e12;
  for (double v = voxel_size; v < kMost; v = next_of_two_digits(v)) {
    if (!fits(volume_grid(volume, v))) continue;
    std::ostringstream text;
    text << "voxel_size " << v << " would fit";
    return text.str();
  }
  return {};
}

/// What makes the domain of a run fit.
template <class Fits>
std::string cure(const host::BaseObject& volume, const SolverParams& params, Fits fits) {
  return params.upres ? "make upres_factor smaller"
                      : fitting_voxel_size(volume, params.voxel_size, fits);
}

bool fits_frame_file(const VolumeGrid& grid) {
  const Vec3d& n = grid.cells;
  return (n[0] + 3) * (n[1] + 3) * (n[2] + 3) <= kBcfMaxCells;
}

}  // namespace

Outcome check_domain(const host::BaseObject& volume, double voxel_size) {
  SolverParams params;
  params.voxel_size = voxel_size;
  return check_domain(volume, params);
}

Outcome check_domain(const host::BaseObject& volume, const SolverParams& params) {
  const VolumeGrid grid = run_grid(volume, params);
  const bool fits = fits_frame_file(grid);
  if (const std::string wrong = what_is_wrong(grid); !wrong.empty() && fits)
    return Outcome::failure(wrong);
  if (fits) return Outcome::success();
  return Outcome::failure(domain_text(grid.cells) + "is more than a frame file can hold: " +
                          cure(volume, params, fits_frame_file));
}

RunMemory run_memory(const SolverParams& params, const FrameSink& sink,
                     const host::BaseObject& volume, bool has_solids) {
  const auto need = [&](const VolumeGrid& grid) {
    return workspace_bytes(params, sink, grid.cells, has_solids);
  };
  const VolumeGrid grid = run_grid(volume, params);
  RunMemory memory{need(grid), 1.0 * physical_memory(), 1.0 * available_memory(), {}};
  memory.text = domain_text(grid.cells) + "may need " + size_text(memory.need) +
                " of memory. This machine has " + size_text(memory.machine) + ", " +
                size_text(memory.free) + " of it free";
  if (memory.exceeds_free() || memory.exceeds_machine())
    memory.text +=
        ": " + cure(volume, params, [&](const VolumeGrid& g) { return need(g) <= memory.free; });
  return memory;
}

RunMemory run_memory(host::BaseObject& volume, bool upres) {
  SolverParams params;
  params.upres = upres;
  FrameSink sink;
  read_run_settings(params, sink, volume);
  return run_memory(params, sink, volume, has_solids(find_source_tags(volume.GetDocument())));
}

}  // namespace nbx
