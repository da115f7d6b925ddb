#include "C4D/run/coarse_run.h"

#include <cmath>
#include <optional>
#include <sstream>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/settings/volume_grid.h"
#include "cache/frame_names.h"
#include "cache/stale_frames.h"
#include "simulation/fluid_system.h"
#include "util/exception.h"
#include "util/log.h"

namespace nbx {

namespace {

/// Reads the heads of a frame. False if that is impossible.
bool load_heads(SimFrame& frame, const std::string& directory, int number) try {
  const auto frames = list_frames(directory);
  const auto found = frames.find(number);
  return found != frames.end() && frame.load(directory + "/" + found->second);
} catch (const Exception& e) {
  LogMessage() << directory << ": frame " << number << ": " << e.what();
  return false;
}

std::optional<int> first_in_range(const std::set<int>& frames, const RunTimes& times) {
  const auto first = frames.lower_bound(times.start.frame());
  if (first == frames.end() || *first > times.end.frame()) return {};
  return *first;
}

double voxel_edge(const SimFrame& frame) {
  if (frame.grids.empty()) return 0;
  const GridMatrix& m = frame.grids.begin()->second.gridMatrix;  // for row vectors
  return 1 / length(Vec3d(m[0], m[4], m[8]));
}

double edge_of(const Affine3d& world_to_grid) { return 1 / length(world_to_grid.rows[0]); }

/// At the time of the frame, since the scale of the volume may be animated.
Outcome check_voxels(host::BaseObject& volume, const SimFrame& frame,
                     const std::string& directory) {
  const double voxel_size = ParameterReader(volume)(OVOLUME.VOXEL_SIZE);
  evaluate(volume.GetDocument(), to_base_time(frame.frameTime.time));
  const double ratio = voxel_edge(frame) / edge_of(volume_grid(volume, voxel_size).world_to_grid);
  if (std::abs(ratio - 1) < 1e-5) return Outcome::success();
  std::ostringstream text;
  text.precision(6);
  text << "the voxels in " << directory << " have the size " << voxel_size * ratio
       << ", but voxel_size is " << voxel_size << ": set voxel_size to " << voxel_size * ratio
       << ", or simulate the scene again without --upres";
  return Outcome::failure(text.str());
}

}  // namespace

std::set<int> frames_of_run(const std::string& directory) {
  std::set<int> frames;
  if (directory.empty()) return frames;
  const std::set<int> stale = stale_frames(directory);
  for (const auto& [frame, name] : list_frames(directory))
    if (!stale.contains(frame)) frames.insert(frame);
  return frames;
}

Outcome upres_source_ok(const std::string& directory) {
  const std::string simulate = "simulate the scene without --upres, and with cache_velocity, first";
  const std::set<int> frames = frames_of_run(directory);
  if (frames.empty())
    return Outcome::failure((directory.empty()
                                 ? "there is no cache to add detail to"
                                 : "the cache to add detail to, " + directory + ", has no frames") +
                            ": " + simulate);
  SimFrame first;
  if (load_heads(first, directory, *frames.begin()) && FluidSystem::has_velocity(first))
    return Outcome::success();
  return Outcome::failure("the frames in " + directory +
                          " have no velocity, which up-resolution needs: " + simulate);
}

Outcome check_coarse_run(host::BaseObject& volume, const std::string& directory) {
  if (Outcome ok = upres_source_ok(directory); !ok) return ok;
  const RunTimes times = run_times(volume);
  const std::set<int> frames = frames_of_run(directory);
  const std::optional<int> first = first_in_range(frames, times);
  if (!first)
    return Outcome::failure("the cache " + directory + " has frames " + frame_ranges(frames) +
                            ", and none of the range " + std::to_string(times.start.frame()) + "-" +
                            std::to_string(times.end.frame()) + ": give --frames within them");
  SimFrame frame;
  if (!load_heads(frame, directory, *first))
    return Outcome::failure("frame " + std::to_string(*first) + " in " + directory +
                            " can't be read: simulate the scene again without --upres");
  Outcome same = check_voxels(volume, frame, directory);
  evaluate(volume.GetDocument(), to_base_time(times.start.time));
  return same;
}

std::string take_upres_cache(host::BaseObject& volume) {
  const CacheDirData own = cache_dir_data(volume);
  if (own.name.empty()) return {};
  const std::string source = upres_source(own.name);
  set_cache_dir_data(volume, {own.base, upres_cache(source)});
  return own.base + "/" + source;
}

void limit_to_coarse_run(RunTimes& times, const std::string& directory) {
  const std::set<int> frames = frames_of_run(directory);
  if (frames.empty()) return;
  const auto limit = [&](FrameTime& time, int frame) {
    time.time = time.length * Fraction{static_cast<double>(frame), 1};
  };
  if (times.start.frame() < *frames.begin()) limit(times.now, *frames.begin());
  if (times.end.frame() > *frames.rbegin()) limit(times.end, *frames.rbegin());
}

double coarse_voxel_edge(const std::string& directory) {
  const std::set<int> frames = frames_of_run(directory);
  SimFrame first;
  if (frames.empty() || !load_heads(first, directory, *frames.begin())) return 0;
  return voxel_edge(first);
}

std::string missing_in_coarse_run(const RunTimes& times, const std::string& directory) {
  const std::set<int> frames = frames_of_run(directory);
  std::set<int> missing;
  // The last frame needs no velocity of its own: it ends where that of the one before leads.
  for (int frame = times.now.frame(); frame < times.end.frame(); ++frame)
    if (!frames.contains(frame)) missing.insert(frame);
  return missing.empty() ? "" : named_frames(missing);
}

bool has_upres_factor(const SimFrame& state, const std::string& source, int factor) {
  return std::abs(coarse_voxel_edge(source) / voxel_edge(state) / factor - 1) < 1e-2;
}

}  // namespace nbx
