// The finished run that an up-resolution run adds detail to.
#pragma once

#include <set>
#include <string>

#include "C4D/run/run_times.h"
#include "cache/sim_frame.h"
#include "host/interface/scene.h"
#include "util/outcome.h"

namespace nbx {

/// The frames in the cache of a run; those that an earlier run has left don't count.
std::set<int> frames_of_run(const std::string& directory);

/// A failure if the cache has no frames with velocity.
Outcome upres_source_ok(const std::string& directory);

/// A failure, with the cure, if no up-resolution run of the volume can use the cache: it has no
/// velocity, no frame in the volume's range, or voxels of another size than the volume. Leaves the
/// document at the start of the range.
Outcome check_coarse_run(host::BaseObject& volume, const std::string& directory);

/// The cache of the volume's coarse run, whichever of both caches the volume names. The volume then
/// names the one of the up-resolution run, which may not exist yet.
std::string take_upres_cache(host::BaseObject& volume);

/// Limits the range to the frames of the coarse run, with `now` at its start: `start` stays, since
/// the scene is stepped from there.
void limit_to_coarse_run(RunTimes& times, const std::string& directory);

/// Frames that the coarse run lacks within the range, as text; empty if there are none.
std::string missing_in_coarse_run(const RunTimes& times, const std::string& directory);

/// The edge of the voxels in the world, by the first frame; 0 if that can't be read.
double coarse_voxel_edge(const std::string& directory);

/// Whether a state comes from an up-resolution run of this factor.
bool has_upres_factor(const SimFrame& state, const std::string& source, int factor);

}  // namespace nbx
