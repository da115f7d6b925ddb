#include "C4D/run/domain_checks.h"

#include <algorithm>

#include "cache/bcf_format.h"
#include "simulation/workspace.h"
#include "util/format_size.h"
#include "util/log.h"
#include "util/memory.h"

namespace nbx {

namespace {

std::string domain_text(const Vec3i& n) {
  return "a domain of " + std::to_string(n[0]) + " x " + std::to_string(n[1]) + " x " +
         std::to_string(n[2]) + " voxels ";
}

}  // namespace

Outcome check_domain(const VolumeGrid& grid) {
  if (const std::string wrong = what_is_wrong(grid); !wrong.empty()) return Outcome::failure(wrong);
  const Vec3i n = grid.dims();
  if ((n[0] + 3.0) * (n[1] + 3.0) * (n[2] + 3.0) <= kBcfMaxCells) return Outcome::success();
  return Outcome::failure(domain_text(n) + "is more than a frame file can hold");
}

Outcome check_memory(const SolverParams& params, const FrameSink& sink, const VolumeGrid& grid,
                     bool has_solids) {
  const double need = workspace_bytes(params, sink, grid.cells, has_solids);
  const std::uint64_t have = physical_memory();
  if (have == 0 || need <= have) return Outcome::success();
  const std::string size = format_size(static_cast<std::uint64_t>(std::min(need, 1e19)), 2);
  LogMessage() << "Maximum simulation workspace " << size << " too big for physical memory";
  return Outcome::failure(domain_text(grid.dims()) + "may need " + size +
                          " of memory, this machine has " + format_size(have, 2));
}

}  // namespace nbx
